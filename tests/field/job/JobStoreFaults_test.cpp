// SPDX-License-Identifier: MIT
//
// Files that are no jobs, disks that are full, programs that end in between.
#include "field/job/JobStore.h"
#include "field/job/Sqlite.h"
#include "tests/field/job/JobRows.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace field::test {
namespace {

using testing::HasSubstr;

std::string ContentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void ExpectRefused(const std::string& path, const std::string& why)
{
    const std::string before = ContentOf(path);
    for (const JobAccess access : {JobAccess::Read, JobAccess::Write}) {
        const auto opened = JobStore::Open(path, access);
        EXPECT_FALSE(opened);
        EXPECT_EQ(opened.error, path + ": " + why);
    }
    EXPECT_EQ(ContentOf(path), before);
}

TEST(JobStoreFaults, RefusesFilesOfOtherPrograms)
{
    const ScratchFolder folder;
    ExpectRefused(folder.Write("notes.txt", "no database, though it is rather long for a text\n"),
                  "the file is not a job: it is no GeoPackage");

    PlainLook(folder.Path("plain.db")).Ask("CREATE TABLE point (id INTEGER)");
    ExpectRefused(folder.Path("plain.db"), "the file is not a job: it is no GeoPackage");

    PlainLook(folder.Path("other.gpkg"))
        .Ask("PRAGMA application_id = 1196444487; PRAGMA user_version = 10300;"
             "CREATE TABLE point (id INTEGER, geom POINT, name TEXT)");
    ExpectRefused(folder.Path("other.gpkg"),
                  "the file is not a job: it is another program's GeoPackage");

    PlainLook(folder.Path("old.gpkg"))
        .Ask("PRAGMA application_id = 1196444487; PRAGMA user_version = 10200;"
             "CREATE TABLE point (id INTEGER)");
    ExpectRefused(folder.Path("old.gpkg"),
                  "the file is not a job: it is a GeoPackage of another version");

    PlainLook(folder.Path("old.gpkg")).Ask("PRAGMA user_version = 20000");
    ExpectRefused(folder.Path("old.gpkg"),
                  "the file is not a job: it is a GeoPackage of another version");
}

// Of each page but those of the schema what says how it is to be read.
TEST(JobStoreFaults, SaysThatAFileIsDamaged)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("job.gpkg");
    {
        JobStore job = NewJob(path);
        for (int i = 0; i < 40; ++i)
            ASSERT_TRUE(job.AddPoint(SomePoint(job.FreeName("P"), 1), SomeEpochs()));
    }
    const PlainLook look(path);
    const auto page = std::stoul(look.Ask("PRAGMA page_size"));
    const auto root =
        std::stoul(look.Ask("SELECT rootpage FROM sqlite_schema WHERE name = 'point'"));
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(page * (root - 1)));
    file.write("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 8);
    file.close();

    const auto job = JobStore::Open(path, JobAccess::Read);
    ASSERT_TRUE(job) << job.error;
    const auto points = job->Points();
    EXPECT_FALSE(points);
    EXPECT_EQ(points.error, path + ": the file is damaged");
}

// What SQLite tells of limits and locks of its own connection.
TEST(JobStoreFaults, HasWordsForEachFailure)
{
    namespace inner = tiltpole::field;
    const ScratchFolder folder;
    inner::Sqlite sqlite(folder.Path("any.db"), inner::SqliteAccess::Make);
    const auto failureOf = [&](const char* sql) {
        try {
            sqlite.Run(sql);
        } catch (const inner::SqliteFailure& failure) {
            return std::string(failure.what());
        }
        return std::string("none");
    };
    EXPECT_EQ(failureOf("CREATE TABLE t (a); INSERT INTO t VALUES (1), (2)"), "none");
    EXPECT_EQ(failureOf("PRAGMA max_page_count = 4; INSERT INTO t VALUES (zeroblob(100000))"),
              "the disk is full");
    inner::Statement reading(sqlite, "SELECT a FROM t");
    ASSERT_TRUE(reading.Step());
    EXPECT_EQ(failureOf("DROP TABLE t"), "another program has locked the file");
    EXPECT_EQ(failureOf("SELECT b FROM t"), "no such column: b");
}

TEST(JobStoreFaults, NamesTheColumnThatAJobOfAnotherVersionLacks)
{
    const ScratchFolder folder;
    NewJob(folder.Path("job.gpkg"));
    PlainLook(folder.Path("job.gpkg")).Ask("ALTER TABLE epoch DROP COLUMN disturbed");
    ExpectRefused(folder.Path("job.gpkg"),
                  "the file is not a job of this version: it lacks the column disturbed");
}

TEST(JobStoreFaults, LeavesTheJournalOfAnotherProgramAlone)
{
    const ScratchFolder folder;
    PlainLook(folder.Path("other.gpkg"))
        .Ask("PRAGMA application_id = 1196444487; PRAGMA user_version = 10300;"
             "CREATE TABLE point (id INTEGER)");
    folder.Write("other.gpkg-journal", std::string(600, 'j'));
    ExpectRefused(folder.Path("other.gpkg"),
                  "the file is not a job: it is another program's GeoPackage");
    EXPECT_EQ(ContentOf(folder.Path("other.gpkg-journal")), std::string(600, 'j'));
}

TEST(JobStoreFaults, OpensAJobToWhichOthersAddedTablesAndColumns)
{
    const ScratchFolder folder;
    NewJob(folder.Path("job.gpkg"));
    PlainLook(folder.Path("job.gpkg"))
        .Ask("CREATE TABLE layer_styles (id INTEGER); ALTER TABLE point ADD COLUMN photo TEXT");
    EXPECT_TRUE(OpenForWriting(folder.Path("job.gpkg")).AddPoint(SomePoint("P1", 1), {}));
}

TEST(JobStoreFaults, MakesAJobOfAnEmptyFileAndReadsNone)
{
    const ScratchFolder folder;
    folder.Write("empty.gpkg", "");
    EXPECT_FALSE(JobStore::Open(folder.Path("empty.gpkg"), JobAccess::Read));
    EXPECT_EQ(ContentOf(folder.Path("empty.gpkg")), "");
    EXPECT_TRUE(JobStore::Open(folder.Path("empty.gpkg"), JobAccess::Write));

    const auto missing = JobStore::Open(folder.Path("none.gpkg"), JobAccess::Read);
    EXPECT_EQ(missing.error,
              folder.Path("none.gpkg") + ": the file cannot be opened (No such file or directory)");
    EXPECT_FALSE(std::filesystem::exists(folder.Path("none.gpkg")));
    EXPECT_FALSE(JobStore::Open(folder.Path("no/such/folder.gpkg"), JobAccess::Write));
    EXPECT_FALSE(JobStore::Open(folder.Native().string(), JobAccess::Write));
}

TEST(JobStoreFaults, FindsAJobWhoseNameHasMarksOfAnAddress)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("site #3? 100%.gpkg");
    NewJob(path);
    EXPECT_TRUE(JobStore::Open(path, JobAccess::Read));
    EXPECT_TRUE(std::filesystem::exists(path));
}

// Any file this process writes grows no further than this while the object lives.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before{};
};

TEST(JobStoreFaults, StoresNothingWhereTheDiskIsFullAndGoesOnAfterwards)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("job.gpkg");
    JobStore job = NewJob(path);
    std::vector<JobEpoch> epochs = SomeEpochs();
    epochs[0].receiver.assign(20'000, 'x');
    int stored = 0;
    std::string error;
    {
        const FileSizeLimit limit(std::filesystem::file_size(path) + 90'000);
        while (stored < 50) {
            const auto id = job.AddPoint(SomePoint(job.FreeName("P"), 1), epochs);
            if (!id) {
                error = id.error;
                break;
            }
            ++stored;
        }
        EXPECT_FALSE(job.AddPoint(SomePoint("again", 1), epochs));
    }
    EXPECT_GT(stored, 0);
    EXPECT_LT(stored, 50);
    EXPECT_EQ(error, path + ": the disk reports an error");
    EXPECT_EQ(job.Points()->size(), static_cast<std::size_t>(stored));
    EXPECT_EQ(PlainLook(path).Ask("PRAGMA integrity_check"), "ok");
    EXPECT_TRUE(job.AddPoint(SomePoint("after", 1), epochs));
    EXPECT_EQ(PlainLook(path).Ask("SELECT count(*) FROM point"), std::to_string(stored + 1));
}

TEST(JobStoreFaults, RefusesWhileAnotherProgramHasLockedTheFile)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("job.gpkg");
    JobStore job = NewJob(path);
    {
        const PlainLook other(path);
        ASSERT_EQ(other.Ask("BEGIN EXCLUSIVE"), "");
        EXPECT_EQ(job.AddPoint(SomePoint("P1", 1), SomeEpochs()).error,
                  path + ": another program has locked the file");
        EXPECT_EQ(job.FreeName("P"), "P1");
    }
    EXPECT_TRUE(job.AddPoint(SomePoint("P1", 1), SomeEpochs()));
}

TEST(JobStoreFaults, RefusesWhileAnotherProgramReadsAtTheCommit)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("job.gpkg");
    JobStore job = NewJob(path);
    {
        const PlainLook reader(path);
        ASSERT_EQ(reader.Ask("BEGIN; SELECT count(*) FROM point"), "0");
        EXPECT_EQ(job.AddPoint(SomePoint("P1", 1), SomeEpochs()).error,
                  path + ": another program has locked the file");
        EXPECT_EQ(job.Points()->size(), 0u);
    }
    EXPECT_TRUE(job.AddPoint(SomePoint("P1", 1), SomeEpochs()));
}

// While it lives, a process of root has the rights of nobody, who may read the folder.
class RightsOfNobody
{
public:
    explicit RightsOfNobody(const ScratchFolder& folder) : m_isRoot(geteuid() == 0)
    {
        constexpr uid_t kNobody = 65534;
        if (!m_isRoot) return;
        EXPECT_EQ(chmod(folder.Native().c_str(), 0755), 0);
        EXPECT_EQ(seteuid(kNobody), 0);
    }
    ~RightsOfNobody()
    {
        if (m_isRoot) {
            EXPECT_EQ(seteuid(0), 0);
        }
    }
    RightsOfNobody(const RightsOfNobody&) = delete;
    RightsOfNobody& operator=(const RightsOfNobody&) = delete;

private:
    bool m_isRoot;
};

TEST(JobStoreFaults, RefusesAWriteProtectedFile)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("job.gpkg");
    NewJob(path);
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    EXPECT_EQ(JobStore::Open(path, JobAccess::Write).error, path + ": the file may not be written")
        << "by root neither";
    const RightsOfNobody rights(folder);
    EXPECT_EQ(JobStore::Open(path, JobAccess::Write).error, path + ": the file may not be written");
    EXPECT_TRUE(JobStore::Open(path, JobAccess::Read));
}

TEST(JobStoreFaults, RefusesAFileThatAnotherUserMayWrite)
{
    if (geteuid() != 0) GTEST_SKIP() << "no rights of another user";
    const ScratchFolder folder;
    const std::string path = folder.Path("job.gpkg");
    NewJob(path);
    ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    const RightsOfNobody rights(folder);
    EXPECT_EQ(JobStore::Open(path, JobAccess::Write).error, path + ": the file may not be written");
    EXPECT_TRUE(JobStore::Open(path, JobAccess::Read));
}

// Writes points until it is killed, and one byte to the pipe for each that was acknowledged.
[[noreturn]] void WriteUntilKilled(const std::string& path, int acknowledgments)
{
    auto job = JobStore::Open(path, JobAccess::Write);
    if (!job) _exit(1);
    while (true) {
        const auto id = job->AddPoint(SomePoint(job->FreeName("P"), 1), SomeEpochs());
        if (!id || write(acknowledgments, "x", 1) != 1) _exit(2);
    }
}

// Kills a writer after so many points and a part of the time that one takes; answers how many it
// acknowledged.
std::int64_t KillAWriter(const std::string& path, int points, double part)
{
    int ends[2];
    if (pipe(ends) != 0) return -1;
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        WriteUntilKilled(path, ends[1]);
    }
    close(ends[1]);
    std::int64_t acknowledged = 0;
    char byte = 0;
    using Clock = std::chrono::steady_clock;
    Clock::time_point first;
    while (acknowledged < points && read(ends[0], &byte, 1) == 1)
        if (++acknowledged == 1) first = Clock::now();
    const std::chrono::duration<double> each = (Clock::now() - first) / (points - 1);
    std::this_thread::sleep_for(part * each);
    kill(child, SIGKILL);
    while (read(ends[0], &byte, 1) == 1)
        ++acknowledged;
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? acknowledged : -1;
}

TEST(JobStoreFaults, KeepsEveryAcknowledgedPointWhenTheProgramIsKilled)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("job.gpkg");
    NewJob(path);
    std::int64_t acknowledged = 0;
    for (int round = 0; round < 8; ++round) {
        const std::int64_t more = KillAWriter(path, 3, round / 8.0);
        ASSERT_GE(more, 3);
        acknowledged += more;
        const auto job = JobStore::Open(path, JobAccess::Read);
        ASSERT_TRUE(job) << job.error;
        // The last one may have been written without its acknowledgment.
        const auto stored = static_cast<std::int64_t>(job->Points()->size());
        EXPECT_GE(stored, acknowledged);
        EXPECT_LE(stored, acknowledged + 1);
        acknowledged = stored;
        EXPECT_EQ(job->Epochs(stored)->size(), 2u);
        EXPECT_EQ(PlainLook(path).Ask("PRAGMA integrity_check"), "ok");
    }
}

} // namespace
} // namespace field::test
