#pragma once

#include <string>

#include "document/Node.h"
#include "engine/NetworkPlan.h"

namespace simcore::document {

// Collects the parts of a plan while a document is read, and knows which names exist.
class PlanBuilder {
public:
    // `folder` is where relative file names of the document start.
    PlanBuilder(engine::NetworkPlan& plan, std::string folder)
        : m_plan(plan), m_folder(std::move(folder)) {}

    void readDocument(const Node& root);

private:
    void readBus(const std::string& name, const Node& node);
    void readBox(const Node& node);
    void readUsbDevice(const Node& node);
    void readChannels(const Node& box, engine::BoxPlan& plan, const char* key, engine::BusKind kind,
                      int64_t fallbackCount);
    void addChannelCount(engine::BoxPlan& plan, engine::BusKind kind, int64_t count);
    void readSource(const Node& node);
    void readPeriodic(const Node& node, const std::string& bus);
    void readReplay(const Node& node, const std::string& bus);
    void readResponder(const Node& node);
    void readFault(const Node& node);
    void readFaultDetails(const Node& node, engine::FaultPlan& fault);

    // The bus of this name, made when it is new; complains when it carries another kind.
    void useBus(const std::string& name, engine::BusKind kind, const Node& where);
    [[nodiscard]] const engine::BusPlan* findBus(const std::string& name) const;
    [[nodiscard]] engine::BoxPlan* findBox(const std::string& name);
    void addBox(const Node& node, engine::BoxPlan plan);
    [[nodiscard]] std::string resolveFile(const std::string& file) const;

    engine::NetworkPlan& m_plan;
    const std::string m_folder;
};

[[nodiscard]] RvDipStatus readDip(const Node& node);

// Frames of documents; each complains about what does not fit its kind.
[[nodiscard]] engine::AnyFrame readFrame(const Node& node, engine::BusKind kind);
[[nodiscard]] RvLinFrame readLinFrame(const Node& node);

}  // namespace simcore::document
