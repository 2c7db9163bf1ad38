// SPDX-License-Identifier: MIT
//
// Rows for tests of jobs, and a plain look into the file beside the store.
#pragma once

#include "field/job/JobStore.h"
#include "tests/ScratchFolder.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace field::test {

inline constexpr JobTime kNoon =
    std::chrono::sys_days{std::chrono::year{2026} / 11 / 22} + std::chrono::hours{12};

inline JobSetup SomeSetup()
{
    JobSetup setup;
    setup.made = kNoon;
    setup.poleLength = 2.0;
    setup.phaseCenter = 0.1165;
    setup.sensorType = 1;
    setup.calibration = std::string("[MagneticA.a]1.5\r\n\0tail", 23);
    setup.headingSigma = 1.2;
    setup.tiltSigma = 0.1;
    setup.lengthSigma = 0.001;
    setup.delay = 0.124;
    setup.delaySigma = 0.007;
    setup.axisOffset = 0.5;
    setup.north = "model";
    setup.model = "WMM2025";
    setup.program = "tiltpole 0.1.0";
    return setup;
}

inline JobPoint SomePoint(const std::string& name, std::int64_t setup)
{
    JobPoint point;
    point.tip = {47.56605670, 19.00835993, 230.8054};
    point.name = name;
    point.code = "KERB";
    point.note = "north side, Möbelhaus";
    point.utc = kNoon + std::chrono::milliseconds{58200};
    point.setup = setup;
    point.receivedHeight = 191.3764;
    point.geoid = 39.429;
    point.sigma = {1.5625e-4, 1e-5, 8.836e-5, 0.0, 0.0, 2.25e-4};
    point.epochs = 9;
    point.leftOut = 1;
    point.tilt = 12.34;
    point.azimuthTrue = 250.1;
    point.declination = 5.81;
    point.quality = Fix::Fixed;
    point.station = "0207";
    point.correctionAge = 1.0;
    point.antenna = {47.56605532, 19.00835428, 232.873};
    point.gate = "store";
    return point;
}

inline std::vector<JobEpoch> SomeEpochs()
{
    JobEpoch first;
    first.seconds = 12.345;
    first.receiver = "$GNGGA,130758.00,...*6F\r\n$GNGST,...*5D\r\n";
    first.pose = "$PTPS,1,12345.000,...*4F\r\n";
    JobEpoch second = first;
    second.used = false;
    second.why = "31 mm off the median in plan";
    return {first, second};
}

inline JobStore OpenForWriting(const std::string& path)
{
    JobResult<JobStore> opened = JobStore::Open(path, JobAccess::Write);
    if (!opened) throw std::runtime_error(opened.error);
    return std::move(*opened);
}

/// A job with a setup, whose id is 1, and no points.
inline JobStore NewJob(const std::string& path)
{
    JobStore job = OpenForWriting(path);
    const auto setup = job.AddSetup(SomeSetup());
    if (!setup) throw std::runtime_error(setup.error);
    return job;
}

/// The file by another connection.
class PlainLook
{
public:
    explicit PlainLook(const std::string& path)
    {
        if (sqlite3_open(path.c_str(), &m_handle) != SQLITE_OK) throw std::runtime_error(path);
    }
    ~PlainLook() { sqlite3_close(m_handle); }
    PlainLook(const PlainLook&) = delete;
    PlainLook& operator=(const PlainLook&) = delete;

    /// Rows with columns joined by '|'; NULL is "NULL". An error is its message.
    std::string Ask(const std::string& sql) const
    {
        std::string rows;
        const auto add = [](void* to, int count, char** values, char**) {
            auto& text = *static_cast<std::string*>(to);
            if (!text.empty()) text += '\n';
            for (int i = 0; i < count; ++i)
                text += (i > 0 ? "|" : "") + std::string(values[i] != nullptr ? values[i] : "NULL");
            return 0;
        };
        char* error = nullptr;
        if (sqlite3_exec(m_handle, sql.c_str(), add, &rows, &error) != SQLITE_OK) {
            rows = error;
            sqlite3_free(error);
        }
        return rows;
    }

private:
    sqlite3* m_handle = nullptr;
};

} // namespace field::test
