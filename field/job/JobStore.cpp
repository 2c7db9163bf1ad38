// SPDX-License-Identifier: MIT
#include "field/job/JobStore.h"

#include "field/job/Rows.h"
#include "field/job/Schema.h"
#include "field/job/Sqlite.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <system_error>

namespace field {

namespace inner = tiltpole::field;

struct JobStore::File
{
    File(std::string name, inner::SqliteAccess access) : path(std::move(name)), sqlite(path, access)
    {}

    std::string path;
    inner::Sqlite sqlite;
};

namespace {

constexpr std::size_t kLongestName = 64; // bytes
constexpr const char* kProtected = "the file may not be written";

/// The result of `work`, or its failure as a sentence.
template <class Work>
auto Guarded(const std::string& path, const Work& work) noexcept -> JobResult<decltype(work())>
{
    try {
        return {work(), {}};
    } catch (const inner::SqliteFailure& failure) {
        try {
            return {std::nullopt, path + ": " + failure.what()};
        } catch (...) {
            return {std::nullopt, "out of memory"};
        }
    } catch (...) {
        return {std::nullopt, "out of memory"}; // short enough to need none
    }
}

bool IsEmptyOrMissing(const std::string& path)
{
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found) return true;
    return std::filesystem::is_regular_file(status) && std::filesystem::file_size(path, error) == 0;
}

bool IsFolder(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_directory(path, error);
}

// Nobody may write it. Root could, but who protected the file did not mean that.
bool IsProtected(const std::string& path)
{
    using std::filesystem::perms;
    constexpr perms kAnyWrite = perms::owner_write | perms::group_write | perms::others_write;
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    return std::filesystem::exists(status) && (status.permissions() & kAnyWrite) == perms::none;
}

void Prepare(inner::Sqlite& sqlite, JobAccess access)
{
    sqlite.Run("PRAGMA foreign_keys = ON");
    if (access == JobAccess::Read) {
        sqlite.Run("PRAGMA query_only = ON");
        return;
    }
    if (sqlite.IsWriteProtected()) throw inner::SqliteFailure(kProtected);
    // While another program keeps the file in write-ahead mode, that stays; it is as durable.
    try {
        sqlite.Run("PRAGMA journal_mode = DELETE");
    } catch (const inner::SqliteFailure&) {
        static_cast<void>(0);
    }
    sqlite.Run("PRAGMA synchronous = FULL");
}

void CheckText(const std::string& text, const char* what)
{
    if (!inner::IsUtf8(text)) throw inner::SqliteFailure(std::string(what) + " is not UTF-8");
}

void CheckName(const std::string& name)
{
    if (name.empty()) throw inner::SqliteFailure("a point needs a name");
    if (name.size() > kLongestName)
        throw inner::SqliteFailure("the name of a point has at most 64 bytes");
    CheckText(name, "the name of the point");
    for (const char c : name)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            throw inner::SqliteFailure("the name of a point has no control characters");
    if (name.front() == ' ' || name.back() == ' ')
        throw inner::SqliteFailure("the name of a point neither begins nor ends with a blank");
}

bool HasRow(const inner::Sqlite& sqlite, const char* sql, std::int64_t id)
{
    return inner::Statement(sqlite, sql).Add(id).Step();
}

void CheckPoint(const inner::Sqlite& sqlite, const JobPoint& point)
{
    CheckName(point.name);
    CheckText(point.code, "the code of the point");
    CheckText(point.note, "the note of the point");
    const Geodetic& tip = point.tip;
    if (!(std::abs(tip.latitude) <= 90.0 && std::abs(tip.longitude) <= 180.0
          && std::isfinite(tip.ellipsoidalHeight)))
        throw inner::SqliteFailure("point " + point.name + " has no place on the globe");
    if (inner::Statement(sqlite, "SELECT 1 FROM point WHERE name = ?").Add(point.name).Step())
        throw inner::SqliteFailure("there is a point " + point.name + " already");
    if (!HasRow(sqlite, "SELECT 1 FROM setup WHERE id = ?", point.setup))
        throw inner::SqliteFailure("there is no setup " + std::to_string(point.setup));
    if (!point.replaces) return;
    if (!HasRow(sqlite, "SELECT 1 FROM point WHERE id = ?", *point.replaces))
        throw inner::SqliteFailure("there is no point with the id "
                                   + std::to_string(*point.replaces));
    if (HasRow(sqlite, "SELECT 1 FROM point WHERE replaces = ?", *point.replaces))
        throw inner::SqliteFailure("the point that " + point.name
                                   + " replaces has been replaced already");
}

std::int64_t InsertPoint(inner::Sqlite& sqlite, const JobPoint& point,
                         std::span<const JobEpoch> epochs)
{
    CheckPoint(sqlite, point);
    inner::Insert(sqlite, point);
    const std::int64_t id = sqlite.LastId();
    int n = 0;
    for (const JobEpoch& epoch : epochs)
        inner::Insert(sqlite, epoch, id, ++n);
    inner::WidenExtent(sqlite, point.tip);
    return id;
}

/// One row of a table in a transaction of its own.
template <class Row>
std::int64_t InsertAlone(inner::Sqlite& sqlite, const Row& row, const char* table)
{
    inner::Transaction transaction(sqlite);
    inner::Insert(sqlite, row);
    const std::int64_t id = sqlite.LastId();
    inner::Touch(sqlite, table);
    transaction.Commit();
    return id;
}

} // namespace

JobStore::JobStore(std::unique_ptr<File> file) : m_file(std::move(file)) {}
JobStore::~JobStore() = default;
JobStore::JobStore(JobStore&&) noexcept = default;
JobStore& JobStore::operator=(JobStore&&) noexcept = default;

JobResult<JobStore> JobStore::Open(const std::string& path, JobAccess access) noexcept
{
    return Guarded(path, [&] {
        if (IsFolder(path)) throw inner::SqliteFailure("is a folder, not a job");
        // Looked at without locks or journals first: opening could already change another's file.
        const bool makes = access == JobAccess::Write && IsEmptyOrMissing(path);
        if (!makes) {
            const inner::Sqlite look(path, inner::SqliteAccess::Look);
            const std::string problem = inner::NotAJob(look);
            if (!problem.empty()) throw inner::SqliteFailure(problem);
        }
        if (access == JobAccess::Write && IsProtected(path)) throw inner::SqliteFailure(kProtected);
        using inner::SqliteAccess;
        auto file = std::make_unique<File>(path, makes                        ? SqliteAccess::Make
                                                 : access == JobAccess::Write ? SqliteAccess::Write
                                                                              : SqliteAccess::Read);
        Prepare(file->sqlite, access);
        if (makes) inner::MakeJob(file->sqlite);
        return JobStore(std::move(file));
    });
}

JobResult<std::int64_t> JobStore::AddSetup(const JobSetup& setup) noexcept
{
    return Guarded(m_file->path, [&] {
        inner::Transaction transaction(m_file->sqlite);
        const std::vector<JobSetup> last = inner::ReadSetups(m_file->sqlite, inner::Which::Last);
        if (!last.empty() && inner::SameValues(last.front(), setup)) return last.front().id;
        inner::Insert(m_file->sqlite, setup);
        const std::int64_t id = m_file->sqlite.LastId();
        inner::Touch(m_file->sqlite, "setup");
        transaction.Commit();
        return id;
    });
}

JobResult<std::int64_t> JobStore::AddPoint(const JobPoint& point,
                                           std::span<const JobEpoch> epochs) noexcept
{
    return Guarded(m_file->path, [&] {
        inner::Transaction transaction(m_file->sqlite);
        const std::int64_t id = InsertPoint(m_file->sqlite, point, epochs);
        transaction.Commit();
        return id;
    });
}

JobResult<std::vector<std::int64_t>>
JobStore::AddPoints(std::span<const std::pair<JobPoint, std::vector<JobEpoch>>> points) noexcept
{
    return Guarded(m_file->path, [&] {
        std::vector<std::int64_t> ids;
        inner::Transaction transaction(m_file->sqlite);
        for (const auto& [point, epochs] : points)
            ids.push_back(InsertPoint(m_file->sqlite, point, epochs));
        transaction.Commit();
        return ids;
    });
}

JobDone JobStore::VoidPoint(std::int64_t id, const std::string& reason) noexcept
{
    auto done = Guarded(m_file->path, [&] {
        if (reason.empty()) throw inner::SqliteFailure("a void point needs a reason");
        CheckText(reason, "the reason");
        inner::Transaction transaction(m_file->sqlite);
        if (!HasRow(m_file->sqlite, "SELECT 1 FROM point WHERE id = ?", id))
            throw inner::SqliteFailure("there is no point with the id " + std::to_string(id));
        inner::Statement(m_file->sqlite,
                         "UPDATE point SET void_reason = ? WHERE id = ? AND void_reason IS NULL")
            .Add(reason)
            .Add(id)
            .Step();
        if (m_file->sqlite.Changes() == 0) throw inner::SqliteFailure("the point is void already");
        inner::Touch(m_file->sqlite, "point");
        transaction.Commit();
        return true;
    });
    return {std::move(done.error)};
}

JobResult<std::int64_t> JobStore::AddLeanPair(const JobLeanPair& pair) noexcept
{
    return Guarded(m_file->path, [&] { return InsertAlone(m_file->sqlite, pair, "lean_pair"); });
}

JobResult<std::int64_t> JobStore::AddStake(const JobStake& stake) noexcept
{
    return Guarded(m_file->path, [&] { return InsertAlone(m_file->sqlite, stake, "stake"); });
}

JobResult<std::int64_t> JobStore::AddEvent(const JobEvent& event) noexcept
{
    return Guarded(m_file->path, [&] { return InsertAlone(m_file->sqlite, event, "event"); });
}

std::string JobStore::FreeName(std::string_view stem) const noexcept
{
    constexpr std::size_t kMostDigits = 18;
    auto largest = Guarded(m_file->path, [&] {
        std::int64_t number = 0;
        inner::Statement names(m_file->sqlite, "SELECT name FROM point");
        while (names.Step()) {
            const std::string name = names.Text();
            if (!name.starts_with(stem)) continue;
            const char* begin = name.data() + stem.size();
            const char* end = name.data() + name.size();
            std::int64_t found = 0;
            const auto [rest, error] = std::from_chars(begin, end, found);
            const bool whole = begin != end && rest == end && error == std::errc{} && found >= 0
                               && end - begin <= static_cast<std::ptrdiff_t>(kMostDigits);
            if (whole) number = std::max(number, found);
        }
        return number;
    });
    try {
        return std::string(stem) + std::to_string(largest.value.value_or(0) + 1);
    } catch (...) {
        return {};
    }
}

JobResult<std::vector<JobSetup>> JobStore::Setups() const noexcept
{
    return Guarded(m_file->path,
                   [&] { return inner::ReadSetups(m_file->sqlite, inner::Which::All); });
}

JobResult<std::vector<JobPoint>> JobStore::Points() const noexcept
{
    return Guarded(m_file->path, [&] { return inner::ReadPoints(m_file->sqlite); });
}

JobResult<std::vector<JobEpoch>> JobStore::Epochs(std::int64_t point) const noexcept
{
    return Guarded(m_file->path, [&] { return inner::ReadEpochs(m_file->sqlite, point); });
}

JobResult<std::vector<JobLeanPair>> JobStore::LeanPairs() const noexcept
{
    return Guarded(m_file->path, [&] { return inner::ReadLeanPairs(m_file->sqlite); });
}

JobResult<std::vector<JobStake>> JobStore::Stakes() const noexcept
{
    return Guarded(m_file->path, [&] { return inner::ReadStakes(m_file->sqlite); });
}

JobResult<std::vector<JobEvent>> JobStore::Events() const noexcept
{
    return Guarded(m_file->path, [&] { return inner::ReadEvents(m_file->sqlite); });
}

} // namespace field
