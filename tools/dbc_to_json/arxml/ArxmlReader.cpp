#include "arxml/ArxmlReader.h"

#include <string>

#include "arxml/ClusterReader.h"
#include "arxml/CompuReader.h"
#include "arxml/EcucReader.h"
#include "arxml/EthernetReader.h"
#include "arxml/PartyReader.h"
#include "arxml/PathIndex.h"
#include "arxml/PduReader.h"
#include "arxml/ReadContext.h"
#include "arxml/SignalReader.h"
#include "arxml/XmlText.h"

namespace quill::arxml {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Release behind the fixed part of the namespace: r4.0, 3.2.3, 3.1.4.DAI.2 and the like.
std::string_view releaseOf(std::string_view nameSpace) {
    constexpr std::string_view kStart = "http://autosar.org/";
    constexpr std::string_view kSchema = "schema/";
    if (!nameSpace.starts_with(kStart)) return {};
    nameSpace.remove_prefix(kStart.size());
    if (nameSpace.starts_with(kSchema)) {
        nameSpace.remove_prefix(kSchema.size());
        const bool isRelease = nameSpace.size() > 1 && nameSpace[0] == 'r' && isDigit(nameSpace[1]);
        return isRelease ? nameSpace : std::string_view{};
    }
    return !nameSpace.empty() && isDigit(nameSpace[0]) ? nameSpace : std::string_view{};
}

std::optional<ReadError> checkRoot(const Document& document, Database& out) {
    const auto root = document.root();
    if (nameOf(root) == "FIBEX") {
        return ReadError{root.offset_debug(),
                         "this is a FIBEX file; the command fibex-parse reads it"};
    }
    if (nameOf(root) != "AUTOSAR") {
        return ReadError{root.offset_debug(), "the root element is " +
                                                  std::string(nameOf(root).substr(0, 100)) +
                                                  " instead of AUTOSAR"};
    }
    out.version = releaseOf(document.rootNamespace());
    if (out.version.empty()) {
        const auto found = document.rootNamespace().substr(0, 200);
        return ReadError{root.offset_debug(), found.empty()
                                                  ? std::string("the root element has no namespace")
                                                  : "unknown namespace " + std::string(found)};
    }
    return std::nullopt;
}

bool readClusters(ReadContext& context, PartyReader& parties) {
    CompuReader compu(context);
    SignalReader signals(context, compu);
    PduReader pdus(context, signals);
    ClusterReader clusters(context, pdus, parties);
    EthernetReader ethernet(context, pdus, parties, clusters);
    const auto& roots = context.index().roots();
    for (const auto cluster : roots.canClusters) {
        if (!clusters.readCan(cluster)) return false;
    }
    for (const auto cluster : roots.flexRayClusters) {
        if (!clusters.readFlexRay(cluster)) return false;
    }
    for (const auto cluster : roots.ethClusters) {
        if (!ethernet.read(cluster)) return false;
    }
    return true;
}

}  // namespace

std::optional<ReadError> readArxml(const Document& document, Database& out) {
    if (auto refused = checkRoot(document, out)) return refused;
    PathIndex index;
    index.build(document.root());
    ReadContext context(index, out);
    PartyReader parties(context);
    for (const auto system : index.roots().systems) {
        const auto order = textOf(system, "CONTAINER-I-PDU-HEADER-BYTE-ORDER");
        if (!order.empty()) out.containerHeaderByteOrder = order;
    }
    bool isRead = parties.readEcus() && readClusters(context, parties);
    const auto& roots = index.roots();
    // A configuration and the description that it was made from would tell every frame twice.
    if (isRead && roots.canClusters.empty()) isRead = EcucReader(context).read();
    if (!isRead && context.error()) return context.error();
    if (!isRead) return ReadError{-1, "the file could not be read"};
    return std::nullopt;
}

}  // namespace quill::arxml
