#pragma once

#include "engine/Box.h"
#include "simcore/flat.h"

namespace simcore::api {

// Releases the settings of a job that was not accepted, whatever the reason.
class JobTicket {
public:
    explicit JobTicket(const RvCanCycleJob& job) : m_job(job) {}
    JobTicket(const JobTicket&) = delete;
    JobTicket& operator=(const JobTicket&) = delete;
    ~JobTicket() {
        if (!m_taken && m_job.release != nullptr) m_job.release(m_job.settings);
    }
    // The job object will release the settings.
    void hand() const { m_taken = true; }

private:
    const RvCanCycleJob& m_job;
    mutable bool m_taken = false;
};

// Operations on cyclic jobs, shared by the flat functions and the connections. Engine lock held.
[[nodiscard]] int addCanJob(engine::Box& box, const RvCanCycleJob& job, const JobTicket& ticket);
[[nodiscard]] int addEthernetJob(engine::Box& box, const RvEthCycleJob& job);
[[nodiscard]] int pauseJob(engine::Box& box, engine::BusKind kind, const char* uuid);
[[nodiscard]] int resumeJob(engine::Box& box, engine::BusKind kind, const char* uuid);
[[nodiscard]] int replaceJobFrame(engine::Box& box, const char* uuid, const RvCanFrame& frame);
[[nodiscard]] int setJobPeriod(engine::Box& box, const char* uuid, int32_t periodMs);
[[nodiscard]] int jobCounters(engine::Box& box, const char* uuid, RvCycleCounters& counters);

}  // namespace simcore::api
