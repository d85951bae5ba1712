#include <algorithm>
#include <cstring>

#include "core/hardware/boxdev/FrameConversion.h"
#include "core/hardware/boxdev/Hub4e.h"
#include "core/hardware/boxdev/Library.h"
#include "core/hardware/boxdev/SendDocument.h"

// Transmission commands of a network box.
namespace RV::BoxDev {
namespace {

void answerJob(int result, RespondCmdMsg& answer) {
    if (result == kRvOk) return;
    refuse(answer,
           result == kRvErrorUnknownJob ? CommandCode::NoSuchJob : CommandCode::LibraryFailed,
           libraryResultText(result));
}

void answerSend(int result, RespondCmdMsg& answer) {
    if (result != kRvOk) refuse(answer, CommandCode::SendFailed, libraryResultText(result));
}

// Runs `call` with the job identifier of a document that addresses a cyclic job.
template <class Call>
void runOnJob(const nlohmann::json& document, int32_t handle, Call call, RespondCmdMsg& answer) {
    if (!document.contains("cycle_uuid") || !document["cycle_uuid"].is_string()) {
        return refuse(answer, CommandCode::BadValue, "\"cycle_uuid\" is missing or not a text");
    }
    const auto uuid = document["cycle_uuid"].get<std::string>();
    answerJob(withLibrary([&] { return call(handle, uuid.c_str()); }), answer);
}

int32_t portOf(const nlohmann::json& document) {
    const auto found = document.find("port_id");
    return found != document.end() && found->is_number_integer() ? found->get<int32_t>() : -1;
}

}  // namespace

void Hub4e::startSendCanFrame(const Json& document, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    std::string reason;
    auto request = parseCanSendDocument(document, reason);
    if (!request) return refuse(answer, CommandCode::BadValue, reason);
    if (request->frame.channel >= m_cfg.canCount) {
        return refuse(answer, CommandCode::BadValue,
                      "the box has no CAN channel " + std::to_string(request->frame.channel));
    }
    if (!request->cyclic) {
        if (!m_singleCounters.apply(request->frame, request->update, reason)) {
            return refuse(answer, CommandCode::BadValue, reason);
        }
        const RvCanFrame frame = toLibrary(request->frame);
        return answerSend(withLibrary([&] { return send_can_frame_once(m_cfg.handle, &frame); }),
                          answer);
    }
    RvCanCycleJob job;
    if (!fillCycleJob(*request, job, reason)) return refuse(answer, CommandCode::BadValue, reason);
    const int result = withLibrary([&] { return add_can_cycle_frame(m_cfg.handle, &job); });
    answerSend(result, answer);
}

void Hub4e::pauseSendCanFrame(const Json& document, RespondCmdMsg& answer) {
    if (requireConnected(answer)) {
        runOnJob(document, m_cfg.handle, &pause_can_cycle_frame, answer);
    }
}

void Hub4e::resumeSendCanFrame(const Json& document, RespondCmdMsg& answer) {
    if (requireConnected(answer)) {
        runOnJob(document, m_cfg.handle, &resume_can_cycle_frame, answer);
    }
}

void Hub4e::removeSendCanFrame(const Json& document, RespondCmdMsg& answer) {
    if (requireConnected(answer)) {
        runOnJob(document, m_cfg.handle, &remove_can_cycle_frame, answer);
    }
}

void Hub4e::updateSendCanFrame(const Json& document, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    std::string reason;
    const auto request = parseCanSendDocument(document, reason);
    if (!request) return refuse(answer, CommandCode::BadValue, reason);
    const RvCanFrame frame = toLibrary(request->frame);
    const char* uuid = request->uuid.c_str();
    int result = withLibrary([&] { return update_can_cycle_frame(m_cfg.handle, uuid, &frame); });
    if (result == kRvOk) {
        result =
            withLibrary([&] { return set_can_cycle_period(m_cfg.handle, uuid, request->cycleMs); });
    }
    answerJob(result, answer);
}

void Hub4e::startSendEthFrame(const Json& document, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    std::string reason;
    const auto request = parseEthSendDocument(document, reason);
    if (!request) return refuse(answer, CommandCode::BadValue, reason);
    RvEthCycleJob job;
    job.frame.channel = static_cast<uint8_t>(request->channel);
    job.frame.length = static_cast<uint16_t>(request->bytes.size());
    std::copy(request->bytes.begin(), request->bytes.end(), job.frame.data);
    if (!request->cyclic) {
        return answerSend(
            withLibrary([&] { return send_eth_frame_once(m_cfg.handle, &job.frame); }), answer);
    }
    request->uuid.copy(job.uuid, sizeof job.uuid - 1);
    job.periodMs = request->cycleMs;
    job.limitCount = request->limitCount;
    answerSend(withLibrary([&] { return add_eth_cycle_frame(m_cfg.handle, &job); }), answer);
}

void Hub4e::pauseSendEthFrame(const Json& document, RespondCmdMsg& answer) {
    if (requireConnected(answer)) {
        runOnJob(document, m_cfg.handle, &pause_eth_cycle_frame, answer);
    }
}

void Hub4e::resumeSendEthFrame(const Json& document, RespondCmdMsg& answer) {
    if (requireConnected(answer)) {
        runOnJob(document, m_cfg.handle, &resume_eth_cycle_frame, answer);
    }
}

void Hub4e::removeSendEthFrame(const Json& document, RespondCmdMsg& answer) {
    if (requireConnected(answer)) {
        runOnJob(document, m_cfg.handle, &remove_eth_cycle_frame, answer);
    }
}

void Hub4e::startLinScheduleTable(const Json& document, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    std::string reason;
    const auto request = parseLinScheduleDocument(document, reason);
    if (!request) return refuse(answer, CommandCode::BadValue, reason);
    std::vector<RvLinSlot> slots;
    for (const rv::LinSlot& slot : request->slots) {
        RvLinSlot entry;
        entry.id = slot.id;
        entry.msgType = slot.msgType;
        entry.intervalMs = slot.intervalMs;
        entry.checkMode = slot.checkType;
        entry.length = static_cast<uint32_t>(slot.data.size());
        std::copy(slot.data.begin(), slot.data.end(), entry.data);
        slots.push_back(entry);
    }
    answerJob(withLibrary([&] {
                  return start_lin_schedule(m_cfg.handle, request->channel, slots.data(),
                                            static_cast<int32_t>(slots.size()));
              }),
              answer);
}

void Hub4e::stopLinScheduleTable(const Json& document, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    const int32_t channel = portOf(document);
    if (channel < 0 || channel >= m_cfg.linCount) {
        return refuse(answer, CommandCode::BadValue,
                      "the box has no LIN channel " + std::to_string(channel));
    }
    answerJob(withLibrary([&] { return stop_lin_schedule(m_cfg.handle, channel); }), answer);
}

}  // namespace RV::BoxDev
