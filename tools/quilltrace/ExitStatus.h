#pragma once

namespace quilltrace {

// Exit statuses, the same for every command. Failed imports map their failure code to one each.
enum class ExitStatus : int {
    Done = 0,
    Usage = 2,         // the command line is wrong
    Unreadable = 10,   // failure 0: file missing, occupied or not of its format
    NoParser = 12,     // failure 2: no reader for this extension
    Refused = 14,      // failure 4: the database cannot be used or is in use
    NoFrames = 16,     // failure 6: the file holds a header but no frame
    Damaged = 20,      // imported, but parts of the file were lost (only with --strict)
    WriteFailed = 30,  // the output file cannot be written
    Cancelled = 130    // Ctrl-C; nothing of the import is left
};

}  // namespace quilltrace
