#include "Help.h"

namespace quilltrace {
namespace {
constexpr const char* kGeneral = R"(quilltrace - trace files in a database, and back

  quilltrace import drive.blf -o drive.qtrace   load a BLF, ASC, PCAP or PCAPNG file
  quilltrace info   drive.qtrace                what is in it: files, frames, losses
  quilltrace stats  drive.qtrace                cycle times per identifier, bus load
  quilltrace export drive.qtrace -o drive.asc   write it as BLF or ASC again

A database is an SQLite file and may hold several traces. Any SQLite tool can query it:

  sqlite3 drive.qtrace "SELECT hex_ident, count(*) FROM can_frame GROUP BY ident"

Its tables and views are told in docs/traces.md. To convert one format into another, import and
export. "quilltrace COMMAND --help" tells more about a command.

Exit status: 0 done, 2 wrong command line, 10 file not readable, 12 no reader for this extension,
14 database not usable, 16 no frame in the file, 20 damaged (with --strict), 30 output not
writable, 130 cancelled with Ctrl-C.
)";

constexpr const char* kImport = R"(quilltrace import FILE... -o DATABASE

Loads trace files into an SQLite database. The reader is chosen by the extension: .blf, .asc, .pcap
or .pcapng. Without -o the database is the first file's name with the extension .qtrace.

A file is loaded once: it is known by its path, size, time of change and a hash of its first and
last 64 KiB. A file that has changed since replaces its old frames. Ctrl-C, a failure or a killed
process leave nothing of the unfinished file behind; start it again.

A damaged file gives every frame up to the damage and those behind it where the next container or
object can be found. What was lost, and where, is printed and kept in the table "note".

  -o, --output DATABASE  database to load into; it is made when missing
      --strict           exit with 20 when anything of a file was lost
      --json             print one JSON object per file instead of text
  -q, --quiet            no progress, results only
      --log FOLDER       write a log file into this folder

  quilltrace import drive.blf                  -> drive.qtrace
  quilltrace import day1.asc day2.asc -o week.qtrace
  quilltrace import drive.pcapng --json -o drive.qtrace | jq .frames
)";

constexpr const char* kInfo = R"(quilltrace info DATABASE

Lists the files of a database: format, start, length, frames, what was skipped and what was lost.
The number in front of a file is what --file of the other commands takes.

      --json             print JSON instead of text

  quilltrace info week.qtrace
  quilltrace info week.qtrace --json | jq '.[].losses'
)";

constexpr const char* kStats = R"(quilltrace stats DATABASE

Frames per identifier and channel with their cycle times (mean, standard deviation, shortest,
longest), and the load of every channel. The load counts frame bits without stuff bits at the rates
given.

      --file ID          one file of the database (see quilltrace info); otherwise all
      --top N            the N most frequent identifiers only
      --bitrate N        CAN bit rate in bit/s, 500000 by default
      --databitrate N    CAN FD data bit rate, 2000000 by default
      --linrate N        LIN bit rate, 19200 by default
      --ethrate N        Ethernet bit rate, 100000000 by default
      --json             print JSON instead of text
)";

constexpr const char* kExport = R"(quilltrace export DATABASE -o FILE

Writes one file of the database as BLF or ASC, by the extension of FILE. Frames keep their order,
times, channels and flags.

  -o, --output FILE      trace file to write (.blf or .asc)
      --file ID          which file of the database (see quilltrace info); needed when it has several
      --force            write over an existing file
      --json             print a JSON object instead of text
)";
}  // namespace

const char* helpText(const std::string& command) {
    if (command == "import") return kImport;
    if (command == "info") return kInfo;
    if (command == "stats") return kStats;
    if (command == "export") return kExport;
    return kGeneral;
}

}  // namespace quilltrace
