// SPDX-License-Identifier: MIT
//
// The job on the disk. What an addition left is read by another connection: whole or not at all, and
// in the answer. SQLite takes every block from malloc here (no lookaside), where it can fail.
#include "tests/field/job/JobRows.h"
#include "tests/memory/Rows.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace sweep {

namespace {

using namespace field;
using test::SomeEpochs;
using test::SomePoint;
using test::SomeSetup;

const int kWithoutLookaside = sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0);

// Folders for files, in memory where the system has such a place: no commit waits for a disk.
const int kInMemory = ::access("/dev/shm", W_OK) == 0 ? ::setenv("TMPDIR", "/dev/shm", 1) : 0;

// A job with a setup whose calibration another program made a number of, a point and a row of each
// other table; its bytes.
const std::string& PreparedFile()
{
    EXPECT_EQ(kWithoutLookaside, SQLITE_OK);
    EXPECT_EQ(kInMemory, 0);
    static const std::string bytes = [] {
        const ScratchFolder folder;
        const std::string path = folder.Path("job.gpkg");
        {
            JobStore job = test::NewJob(path);
            job.AddPoint(SomePoint("a point with a long name 7", 1), SomeEpochs());
            job.AddLeanPair({0, 1, 1, 0.02, 1.5, test::kNoon});
            job.AddStake({
                0, "a design point with a long name", {47.5, 19.0, 100.0},
                  1
            });
            job.AddEvent({0, test::kNoon, "base", "another base, at some length of text"});
        }
        test::PlainLook(path).Ask("UPDATE setup SET calibration = 123456");
        std::ifstream file(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }();
    return bytes;
}

struct Closed
{
    Closed() : path(folder.Path("job.gpkg")) {}

    ScratchFolder folder;
    std::string path;
    std::optional<JobStore> job;
    std::string result;
    std::int64_t id = 0; // that was answered
};

struct Opened : Closed
{
    Opened()
    {
        folder.Write("job.gpkg", PreparedFile());
        job = test::OpenForWriting(path);
        setup.program = "another program";
        for (const char* name : {"first", "second", "third"})
            points.emplace_back(SomePoint(name, 1), SomeEpochs());
    }

    // What is added, made before allocations fail.
    JobSetup setup = SomeSetup();
    JobStake stake{
        0, "another design point", {47.5, 19.0, 100.0},
          1
    };
    JobEvent event{0, test::kNoon, "gap", "a gap, at some length of text"};
    std::vector<std::pair<JobPoint, std::vector<JobEpoch>>> points;
    const std::string reason = "it was the wrong mark, says the crew";
};

struct There : Closed
{
    There() { folder.Write("job.gpkg", PreparedFile()); }
};

// The answer, and the content as the job and as another program see it.
std::string DescribeJob(const Closed& c)
{
    std::string text = c.result + std::to_string(c.id) + (c.job ? " open " : " closed ");
    if (!std::filesystem::exists(c.path)) return text + "no file";
    if (std::filesystem::file_size(c.path) == 0) return text + "an empty file";
    if (c.job) {
        const auto points = c.job->Points();
        text += points ? std::to_string(points->size()) : points.error;
    }
    const test::PlainLook look(c.path);
    for (const char* sql :
         {"SELECT id, name, void_reason FROM point", "SELECT count(*) FROM epoch",
          "SELECT id, program FROM setup", "SELECT count(*) FROM lean_pair",
          "SELECT id, name FROM stake", "SELECT id, text FROM event", "PRAGMA integrity_check"})
        text += '\n' + look.Ask(sql);
    return text;
}

template <class Value>
std::string Answer(const JobResult<Value>& result,
                   const std::function<std::string(const Value&)>& text)
{
    return result ? text(*result) : std::string();
}

const reference::Pace kPace{8, 37};

template <class State>
void Add(std::vector<Row>& rows, const char* covers, std::function<void(State&)> run,
         AfterFailure<State> after = {})
{
    rows.push_back(Operation<State>(
        covers, Shortage::Reports, std::move(run), [](const State& s) { return DescribeJob(s); },
        std::move(after), kPace));
}

void AddOpeningRows(std::vector<Row>& rows)
{
    const auto open = [](JobAccess access) {
        return [access](Closed& c) {
            auto opened = JobStore::Open(c.path, access);
            c.job.reset();
            if (opened) c.job = std::move(*opened);
        };
    };
    Add<There>(rows, "field::JobStore::Open", open(JobAccess::Write));
    Add<There>(rows, "field::JobStore::Open", open(JobAccess::Read));
    // An empty file may be left, which the next call makes a job of.
    Add<Closed>(rows, "field::JobStore::Open field::JobStore::JobStore field::JobStore::operator=",
                open(JobAccess::Write),
                {[](const Closed& c) {
                     return !c.job && std::filesystem::exists(c.path)
                            && std::filesystem::file_size(c.path) == 0;
                 },
                 {}});
}

void AddAdditionRows(std::vector<Row>& rows)
{
    const auto add = [&](const char* covers, std::function<JobResult<std::int64_t>(Opened&)> run) {
        Add<Opened>(rows, covers, [run](Opened& o) {
            const auto id = run(o);
            o.id = id ? *id : 0;
        });
    };
    add("field::JobStore::AddSetup", [](Opened& o) { return o.job->AddSetup(o.setup); });
    add("field::JobStore::AddPoint",
        [](Opened& o) { return o.job->AddPoint(o.points[0].first, o.points[0].second); });
    add("field::JobStore::AddLeanPair", [](Opened& o) {
        return o.job->AddLeanPair({0, 1, 1, 0.03, 2.5, test::kNoon});
    });
    add("field::JobStore::AddStake", [](Opened& o) { return o.job->AddStake(o.stake); });
    add("field::JobStore::AddEvent", [](Opened& o) { return o.job->AddEvent(o.event); });
    Add<Opened>(rows, "field::JobStore::AddPoints", [](Opened& o) {
        const auto ids = o.job->AddPoints(o.points);
        o.id = ids ? ids->back() : 0;
    });
    Add<Opened>(rows, "field::JobStore::VoidPoint",
                [](Opened& o) { o.id = o.job->VoidPoint(1, o.reason) ? 1 : 0; });
}

void AddReadingRows(std::vector<Row>& rows)
{
    Add<Opened>(rows, "field::JobStore::FreeName",
                [](Opened& o) { o.result = o.job->FreeName("a point with a long name "); },
                {[](const Opened& o) {
                     return o.result.empty() || o.result == "a point with a long name 1";
                 },
                 {}});
    const auto add = [&](const char* covers, std::function<std::string(JobStore&)> run) {
        Add<Opened>(rows, covers, [run](Opened& o) { o.result = run(*o.job); });
    };
    add("field::JobStore::Setups", [](JobStore& job) {
        return Answer<std::vector<JobSetup>>(job.Setups(), [](const auto& all) {
            return all.at(0).calibration + all.at(0).program + Text(all.at(0).delay);
        });
    });
    add("field::JobStore::Points", [](JobStore& job) {
        return Answer<std::vector<JobPoint>>(job.Points(), [](const auto& all) {
            return all.at(0).name + all.at(0).note + Text(all.at(0).tip.latitude);
        });
    });
    add("field::JobStore::Epochs", [](JobStore& job) {
        return Answer<std::vector<JobEpoch>>(job.Epochs(1), [](const auto& all) {
            return all.at(1).receiver + all.at(1).why + std::to_string(all.size());
        });
    });
    add("field::JobStore::LeanPairs", [](JobStore& job) {
        return Answer<std::vector<JobLeanPair>>(
            job.LeanPairs(), [](const auto& all) { return Text(all.at(0).apart); });
    });
    add("field::JobStore::Stakes", [](JobStore& job) {
        return Answer<std::vector<JobStake>>(job.Stakes(),
                                             [](const auto& all) { return all.at(0).name; });
    });
    add("field::JobStore::Events", [](JobStore& job) {
        return Answer<std::vector<JobEvent>>(job.Events(),
                                             [](const auto& all) { return all.at(0).text; });
    });
}

} // namespace

std::vector<Row> JobRows()
{
    std::vector<Row> rows;
    AddOpeningRows(rows);
    AddAdditionRows(rows);
    AddReadingRows(rows);
    return rows;
}

} // namespace sweep
