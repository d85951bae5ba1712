#include "arxml/PartyReader.h"

#include <algorithm>

#include "arxml/XmlText.h"

namespace quill::arxml {
namespace {

constexpr int kMaxGroupDepth = 8;
constexpr size_t kMaxEcus = 4096;
// References in groups, counted once per control unit that takes part in the group.
constexpr size_t kMaxGroupMembers = size_t{8} << 20;
constexpr int kMaxAncestorsOfPort = 16;

// Calls visit(reference) for the references in a list, with or without a level around each.
template <class Visit>
void forEachReference(pugi::xml_node list, Visit visit) {
    for (const auto entry : list.children()) {
        const auto name = nameOf(entry);
        if (name.ends_with("-REF")) {
            visit(entry);
        } else {
            for (const auto inner : entry.children()) {
                if (nameOf(inner).ends_with("-REF")) visit(inner);
            }
        }
    }
}

}  // namespace

void addEcu(EcuSet& set, uint32_t ecu) {
    const auto place = std::lower_bound(set.begin(), set.end(), ecu);
    if (place == set.end() || *place != ecu) set.insert(place, ecu);
}

void addAll(EcuSet& set, const EcuSet& others) {
    for (const uint32_t ecu : others) addEcu(set, ecu);
}

bool PartyReader::readEcus() {
    Database& database = m_context.database();
    const auto& ecus = m_context.index().roots().ecus;
    if (ecus.size() > kMaxEcus) {
        return m_context.fail(ecus[kMaxEcus], "the file has more than 4096 control units");
    }
    for (const auto node : m_context.index().roots().ecus) {
        const auto index = static_cast<uint32_t>(database.ecus.size());
        database.ecus.push_back({textOf(node, "SHORT-NAME"), descriptionOf(node)});
        m_ecus.emplace(node.internal_object(), index);
    }
    for (const auto node : m_context.index().roots().ecus) {
        const uint32_t ecu = m_ecus.at(node.internal_object());
        m_visitedGroups.clear();
        for (const char* list :
             {"ASSOCIATED-COM-I-PDU-GROUP-REFS", "ASSOCIATED-I-PDU-GROUP-REFS"}) {
            forEachReference(node.child(list), [&](pugi::xml_node reference) {
                if (const auto group = m_context.wish(reference)) readGroup(group, ecu, 0);
            });
        }
    }
    for (const auto node : m_context.index().roots().nmNodes) readNmNode(node);
    if (m_groupMembers <= kMaxGroupMembers) return true;
    return m_context.fail(ecus.front(), "the PDU groups of the file have too many members");
}

std::optional<uint32_t> PartyReader::ecuAround(pugi::xml_node node) const {
    int levels = kMaxAncestorsOfPort;
    for (auto at = node; at && levels > 0; at = at.parent(), --levels) {
        const auto known = m_ecus.find(at.internal_object());
        if (known != m_ecus.end()) return known->second;
    }
    return std::nullopt;
}

void PartyReader::addTo(const void* pdu, uint32_t ecu, std::string_view direction) {
    if (direction == "OUT") addEcu(m_groups[pdu].senders, ecu);
    if (direction == "IN") addEcu(m_groups[pdu].receivers, ecu);
}

void PartyReader::readGroup(pugi::xml_node group, uint32_t ecu, int depth) {
    if (depth > kMaxGroupDepth || ++m_groupMembers > kMaxGroupMembers) return;
    if (!m_visitedGroups.insert(group.internal_object()).second) return;
    const auto direction = textOf(group, "COMMUNICATION-DIRECTION");
    for (const char* list : {"I-SIGNAL-I-PDUS", "I-PDU-REFS", "I-SIGNAL-I-PDU-REFS", "NM-PDUS"}) {
        forEachReference(group.child(list), [&](pugi::xml_node reference) {
            if (++m_groupMembers > kMaxGroupMembers) return;
            const auto pdu = m_context.wish(reference);
            if (pdu) addTo(pdu.internal_object(), ecu, direction);
        });
    }
    for (const char* list : {"CONTAINED-I-SIGNAL-I-PDU-GROUP-REFS", "CONTAINED-I-PDU-GROUP-REFS",
                             "CONTAINED-I-PDU-GROUPS-REFS"}) {
        forEachReference(group.child(list), [&](pugi::xml_node reference) {
            if (const auto inner = m_context.wish(reference)) readGroup(inner, ecu, depth + 1);
        });
    }
}

void PartyReader::readNmNode(pugi::xml_node node) {
    auto ecu = ecuAround(m_context.index().follow(node.child("CONTROLLER-REF")));
    if (!ecu) ecu = ecuAround(m_context.index().follow(node.child("NM-IF-ECU-REF")));
    if (!ecu) return;
    const auto add = [&](const char* list, const char* direction) {
        forEachReference(node.child(list), [&](pugi::xml_node reference) {
            const auto pdu = m_context.wish(reference);
            if (pdu) addTo(pdu.internal_object(), *ecu, direction);
        });
    };
    add("TX-NM-PDU-REFS", "OUT");
    add("RX-NM-PDU-REFS", "IN");
}

void PartyReader::addPorts(pugi::xml_node portReferences, Parties& out) const {
    forEachReference(portReferences, [&](pugi::xml_node reference) {
        const auto port = m_context.wish(reference);
        const auto ecu = ecuAround(port);
        if (!ecu) return;
        const auto direction = textOf(port, "COMMUNICATION-DIRECTION");
        if (direction == "OUT") addEcu(out.senders, *ecu);
        if (direction == "IN") addEcu(out.receivers, *ecu);
    });
}

void PartyReader::readTriggerings(pugi::xml_node channel, ByElement& pdus,
                                  ByElement& signals) const {
    for (const char* list : {"PDU-TRIGGERINGS", "I-PDU-TRIGGERINGS"}) {
        for (const auto triggering : channel.child(list).children()) {
            const auto pdu = m_context.index().follow(triggering.child("I-PDU-REF"));
            if (pdu) addPorts(triggering.child("I-PDU-PORT-REFS"), pdus[pdu.internal_object()]);
        }
    }
    for (const auto triggering : channel.child("I-SIGNAL-TRIGGERINGS").children()) {
        auto reference = triggering.child("I-SIGNAL-REF");
        if (!reference) reference = triggering.child("SIGNAL-REF");
        const auto signal = m_context.index().follow(reference, {"I-SIGNAL"});
        const auto ports = triggering.child("I-SIGNAL-PORT-REFS");
        if (signal && ports) addPorts(ports, signals[signal.internal_object()]);
    }
}

void PartyReader::resolve(const ByElement& pdus, const ByElement& signals, Channel& channel) const {
    const Database& database = m_context.database();
    // A PDU stands behind all PDUs that it contains, so one pass sees the inner ones first.
    for (uint32_t index = 0; index < database.pdus.size(); ++index) {
        const Pdu& pdu = database.pdus[index];
        Parties parties;
        const auto addFrom = [&](const ByElement& from) {
            const auto known = from.find(pdu.source);
            if (known == from.end()) return;
            addAll(parties.senders, known->second.senders);
            addAll(parties.receivers, known->second.receivers);
        };
        addFrom(m_groups);
        addFrom(pdus);
        for (const PduPart& part : pdu.parts) {
            const auto inner = channel.pduParties.find(part.pdu);
            if (inner == channel.pduParties.end()) continue;
            addAll(parties.senders, inner->second.senders);
            addAll(parties.receivers, inner->second.receivers);
        }
        if (!parties.senders.empty() || !parties.receivers.empty()) {
            channel.pduParties.emplace(index, std::move(parties));
        }
    }
    for (uint32_t index = 0; index < database.signals.size(); ++index) {
        const auto known = signals.find(database.signals[index].source);
        if (known != signals.end() && !known->second.receivers.empty()) {
            channel.signalReceivers.emplace(index, known->second.receivers);
        }
    }
}

}  // namespace quill::arxml
