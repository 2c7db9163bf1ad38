// SPDX-License-Identifier: MIT
/// @file
/// The job: stored points with everything they were computed from, in one file. The file is a
/// GeoPackage 1.3 whose layer `point` any GIS opens as 3D points; docs/job.md lists its tables.
///
///     auto opened = field::JobStore::Open("site.gpkg", field::JobAccess::Write);
///     if (!opened) return Tell(opened.error);
///     field::JobStore& job = *opened;
///     const auto setup = job.AddSetup(field::JobSetupOf(settings, "tiltpole 0.1.0", now));
///     field::JobRecord record = field::JobRecordOf(reports, now); // of one point
///     record.point.name = job.FreeName("P");
///     record.point.setup = *setup;
///     const auto id = job.AddPoint(record.point, record.epochs);
///     if (!id) Tell(id.error); // nothing was stored
///
/// Every addition is one transaction that has reached the disk when the call returns: an answer
/// with a value survives a crash and a power cut. Between two calls the file is complete; a copy of
/// it is a backup. Rows are never deleted or changed, except that a point can be declared void.
/// After an addition that failed (disk full, file locked by another program, cable of the disk
/// pulled) the job is as it was before, and the next call may succeed.
///
/// No function throws; an error is one sentence that names the file. Where memory is short it may be
/// "out of memory" alone.
#pragma once

#include "field/job/JobRecords.h"
#include "framework/core/Export.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace field {

/// A value, or one sentence on why there is none.
template <class Value>
struct JobResult
{
    std::optional<Value> value;
    std::string error; ///< empty where there is a value

    explicit operator bool() const { return value.has_value(); }
    Value& operator*() & { return *value; }
    const Value& operator*() const& { return *value; }
    /// Of a temporary by value: `for (const JobPoint& point : *job.Points())` iterates over what
    /// lives.
    Value operator*() && { return *std::move(value); }
    Value* operator->() { return &*value; }
    const Value* operator->() const { return &*value; }
};

/// Success, or one sentence on what failed.
struct JobDone
{
    std::string error; ///< empty: done

    explicit operator bool() const { return error.empty(); }
};

enum class JobAccess {
    Read,  ///< the file must be there, and may be open elsewhere
    Write, ///< a file that is not there is made; an empty file becomes a job
};

/// One job. To be used by one thread at a time.
class TILTPOLE_API JobStore
{
public:
    /// Opens a job. A file of another program is refused, a GeoPackage that is no job included; a
    /// refused file is not changed by a byte.
    /// @param path  UTF-8
    static JobResult<JobStore> Open(const std::string& path, JobAccess access) noexcept;

    ~JobStore();
    JobStore(JobStore&&) noexcept;
    JobStore& operator=(JobStore&&) noexcept;

    /// Adds a setup unless the last one has the same values, `id` and `made` apart.
    /// @return its id
    JobResult<std::int64_t> AddSetup(const JobSetup& setup) noexcept;

    /// Adds a point and its epochs in one transaction. Refused: a name that is taken, a tip that is
    /// not finite or off the globe, a setup or a replaced point that is not there, a second point
    /// that replaces the same.
    /// @return its id
    JobResult<std::int64_t> AddPoint(const JobPoint& point,
                                     std::span<const JobEpoch> epochs) noexcept;

    /// Several points in one transaction, as AddPoint.
    /// @return their ids in order
    JobResult<std::vector<std::int64_t>>
    AddPoints(std::span<const std::pair<JobPoint, std::vector<JobEpoch>>> points) noexcept;

    /// Declares a point void. Its row stays; a second reason does not replace the first.
    /// @param reason  not empty
    JobDone VoidPoint(std::int64_t id, const std::string& reason) noexcept;

    JobResult<std::int64_t> AddLeanPair(const JobLeanPair& pair) noexcept;
    JobResult<std::int64_t> AddStake(const JobStake& stake) noexcept;
    JobResult<std::int64_t> AddEvent(const JobEvent& event) noexcept;

    /// A name that is free: `stem` and the number after the largest one in use with it.
    /// @return stem and 1 where the job cannot be read; empty, which is no name of a point, where
    ///         there is no memory for it
    std::string FreeName(std::string_view stem) const noexcept;

    /// All rows in the order in which they were added; void and replaced points included.
    JobResult<std::vector<JobSetup>> Setups() const noexcept;
    JobResult<std::vector<JobPoint>> Points() const noexcept;
    JobResult<std::vector<JobEpoch>> Epochs(std::int64_t point) const noexcept;
    JobResult<std::vector<JobLeanPair>> LeanPairs() const noexcept;
    JobResult<std::vector<JobStake>> Stakes() const noexcept;
    JobResult<std::vector<JobEvent>> Events() const noexcept;

private:
    struct File;
    explicit JobStore(std::unique_ptr<File> file);

    std::unique_ptr<File> m_file;
};

} // namespace field
