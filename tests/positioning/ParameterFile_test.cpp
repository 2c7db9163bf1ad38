// SPDX-License-Identifier: MIT
//
// The parameter file: its exact bytes, the values read from damaged files, and the state after a
// failure.
#include "positioning/InclineSensor_Position.h"
#include "tests/framework/core/Folder.h"
#include "tests/reference/FailingAllocations.h"

#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <rapidcheck/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

constexpr const char* kFile = "parameters.cfg";

constexpr std::array<const char*, 21> kKeys = {
    "MagneticA.a",        "MagneticA.b",  "MagneticA.c",  "MagneticA.d",  "MagneticA.e",
    "MagneticA.x0",       "MagneticA.y0", "MagneticA.z0", "MagneticB.a",  "MagneticB.b",
    "MagneticB.c",        "MagneticB.d",  "MagneticB.e",  "MagneticB.x0", "MagneticB.y0",
    "MagneticB.z0",       "CoorTrans.dX", "CoorTrans.dY", "CoorTrans.dZ", "MagneticBiasAngle_A",
    "MagneticBiasAngle_B"};

using Values = std::array<double, 21>; // in the order of the keys

Values ValuesOf(const CInclineSensor_Position& sensor)
{
    const auto a = sensor.GetMagneticCorrectPar_A();
    const auto b = sensor.GetMagneticCorrectPar_B();
    const auto t = sensor.GetMagneticTranslationPar();
    return {a.a,
            a.b,
            a.c,
            a.d,
            a.e,
            a.x0,
            a.y0,
            a.z0,
            b.a,
            b.b,
            b.c,
            b.d,
            b.e,
            b.x0,
            b.y0,
            b.z0,
            t.dX,
            t.dY,
            t.dZ,
            sensor.GetMagneticBiasAngle_A(),
            sensor.GetMagneticBiasAngle_B()};
}

CInclineSensor_Position With(const Values& v)
{
    CInclineSensor_Position sensor;
    sensor.SetMagneticCorrectPar_A({v[5], v[6], v[7], v[0], v[2], v[3], v[1], v[4]});
    sensor.SetMagneticCorrectPar_B({v[13], v[14], v[15], v[8], v[10], v[11], v[9], v[12]});
    sensor.SetMagneticTranslationPar({v[16], v[17], v[18]});
    sensor.SetMagneticBiasAngle_A(v[19]);
    sensor.SetMagneticBiasAngle_B(v[20]);
    return sensor;
}

Values Rising()
{
    Values values;
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<double>(i + 1);
    return values;
}

// The values of a new object after it has read `content`.
Values ReadFrom(const std::string& content)
{
    const TestFolder folder;
    folder.Write(kFile, content);
    CInclineSensor_Position sensor;
    EXPECT_EQ(sensor.ConfigRead(folder.File(kFile)), 1);
    return ValuesOf(sensor);
}

const Values kDefaults = ValuesOf(CInclineSensor_Position{});

TEST(ParameterFile, HasTwentyOneLinesInTheirOrder)
{
    const TestFolder folder;
    std::string expected;
    for (std::size_t i = 0; i < kKeys.size(); ++i)
        expected += std::string("[") + kKeys[i] + "]" + std::to_string(i + 1) + ".0000000000\r\n";
    CInclineSensor_Position sensor = With(Rising());
    EXPECT_EQ(sensor.ConfigSave(folder.File(kFile)), 1);
    EXPECT_EQ(folder.Read(kFile), expected);
    EXPECT_EQ(folder.Names().size(), 1U) << "nothing beside it";
}

TEST(ParameterFile, BeginsWithAZeroForADefaultObject)
{
    const TestFolder folder;
    CInclineSensor_Position sensor;
    EXPECT_EQ(sensor.ConfigSave(folder.File(kFile)), 1);
    EXPECT_EQ(folder.Read(kFile).substr(0, 54),
              "[MagneticA.a]0.0000000000\r\n[MagneticA.b]1.0000000000\r\n");
}

TEST(ParameterFile, WritesTenDecimalsAndNoExponent)
{
    const TestFolder folder;
    Values values{};
    values[0] = -1e-11;
    values[1] = 0.00000000005; // a little above one half of the last digit
    values[2] = 123456789012.0625;
    values[3] = -0.12345678915;
    CInclineSensor_Position sensor = With(values);
    EXPECT_EQ(sensor.ConfigSave(folder.File(kFile)), 1);
    const std::string text = folder.Read(kFile);
    EXPECT_EQ(text.substr(0, text.find("[MagneticA.e]")),
              "[MagneticA.a]-0.0000000000\r\n[MagneticA.b]0.0000000001\r\n"
              "[MagneticA.c]123456789012.0625000000\r\n[MagneticA.d]-0.1234567891\r\n");
}

TEST(ParameterFile, RestoresADefaultObject)
{
    const TestFolder folder;
    CInclineSensor_Position saved;
    ASSERT_EQ(saved.ConfigSave(folder.File(kFile)), 1);
    CInclineSensor_Position read = With(Rising());
    EXPECT_EQ(read.ConfigRead(folder.File(kFile)), 1);
    EXPECT_EQ(ValuesOf(read), kDefaults);
}

RC_GTEST_PROP(ParameterFile, RestoresEveryMemberToTenDecimals, ())
{
    const TestFolder folder;
    Values values;
    for (double& v : values)
        v = *rc::gen::inRange(-1000000000, 1000000000) / 1.7e7;
    CInclineSensor_Position saved = With(values);
    CInclineSensor_Position read;
    RC_ASSERT(saved.ConfigSave(folder.File(kFile)) == 1);
    RC_ASSERT(read.ConfigRead(folder.File(kFile)) == 1);
    const Values restored = ValuesOf(read);
    for (std::size_t i = 0; i < values.size(); ++i)
        RC_ASSERT(std::fabs(restored[i] - values[i]) <= 0.5001e-10);
}

TEST(ParameterFile, LeavesTypeAndFlagsAlone)
{
    const TestFolder folder;
    folder.Write(kFile, "[MagneticBiasAngle_A]1\r\n");
    CInclineSensor_Position sensor;
    sensor.SetSensorType(2);
    PoseSensorData sample;
    sensor.CalculateYaw_A(sample);
    ASSERT_EQ(sensor.IsStationary(), 1);
    EXPECT_EQ(sensor.ConfigRead(folder.File(kFile)), 1);
    EXPECT_EQ(sensor.GetSensorType(), 2);
    EXPECT_EQ(sensor.IsStationary(), 1);
}

TEST(ParameterFile, UpdatesOnlyWhatItNames)
{
    Values expected = kDefaults;
    expected[19] = 12.5;
    EXPECT_EQ(ReadFrom("[MagneticBiasAngle_A]12.5\r\n"), expected);
    EXPECT_EQ(ReadFrom("[MagneticBiasAngle_A]12.5"), kDefaults) << "no line end, no value";
    EXPECT_EQ(ReadFrom("[MagneticBiasAngle_A]12.5\n"), kDefaults);
    EXPECT_EQ(ReadFrom("[MagneticBiasAngle_A]\r\n"), kDefaults) << "an empty value";
    EXPECT_EQ(ReadFrom(""), kDefaults);
}

TEST(ParameterFile, LeavesEveryMemberThatItDoesNotName)
{
    const TestFolder folder;
    for (std::size_t i = 0; i < kKeys.size(); ++i) {
        folder.Write(kFile, std::string("[") + kKeys[i] + "]-7.25\r\n");
        CInclineSensor_Position sensor = With(Rising());
        EXPECT_EQ(sensor.ConfigRead(folder.File(kFile)), 1);
        Values expected = Rising();
        expected[i] = -7.25;
        EXPECT_EQ(ValuesOf(sensor), expected) << kKeys[i];
    }
}

// Runs `work` in a process of its own; its return value is the process's.
template <class Work>
pid_t InChild(Work work)
{
    const pid_t child = ::fork();
    if (child == 0) ::_exit(work());
    return child;
}

TEST(ParameterFile, ReadsAPipeToItsEnd)
{
    const TestFolder folder;
    const CString path = folder.File("pipe");
    ASSERT_EQ(::mkfifo((folder.Native() / "pipe").c_str(), 0666), 0);
    const std::string content =
        std::string(100000, ' ') + "[MagneticA.a]2\r\n" + std::string(1 << 19, 'x');
    std::thread writer([&] { folder.Write("pipe", content); });
    CInclineSensor_Position sensor;
    EXPECT_EQ(sensor.ConfigRead(path), 1);
    writer.join();
    EXPECT_EQ(ValuesOf(sensor)[0], 2.0);
}

TEST(ParameterFile, IsRefusedWhereItNeverEnds)
{
    CInclineSensor_Position sensor = With(Rising());
    EXPECT_EQ(sensor.ConfigRead(L"/dev/zero"), 0);
    EXPECT_EQ(ValuesOf(sensor), Rising());
    EXPECT_EQ(sensor.ConfigRead(L"/dev/null"), 1) << "an empty file";
    EXPECT_EQ(ValuesOf(sensor), Rising());
}

TEST(ParameterFile, TakesNoMoreThanItNeedsFromAPipeThatNeverEnds)
{
    const TestFolder folder;
    ASSERT_EQ(::mkfifo((folder.Native() / "pipe").c_str(), 0666), 0);
    const pid_t child = InChild([&] {
        CInclineSensor_Position sensor;
        return sensor.ConfigRead(folder.File("pipe"));
    });
    ASSERT_GT(child, 0);
    const auto pipeSignal = std::signal(SIGPIPE, SIG_IGN);
    const int pipe = ::open((folder.Native() / "pipe").c_str(), O_WRONLY);
    const std::string piece(4096, ' ');
    std::size_t taken = 0;
    while (taken < (64 << 20) && ::write(pipe, piece.data(), piece.size()) > 0)
        taken += piece.size();
    ::close(pipe);
    std::signal(SIGPIPE, pipeSignal);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 0) << "refused";
    EXPECT_LT(taken, std::size_t{2} << 20);
}

TEST(ParameterFile, IsReadUpTo256Mebibytes)
{
    const TestFolder folder;
    folder.Write(kFile, "[MagneticA.a]2\r\n");
    std::filesystem::resize_file(folder.Native() / kFile, (256 << 20) + 1); // takes no disk space
    CInclineSensor_Position sensor = With(Rising());
    EXPECT_EQ(sensor.ConfigRead(folder.File(kFile)), 0);
    EXPECT_EQ(ValuesOf(sensor), Rising());

    std::filesystem::resize_file(folder.Native() / kFile, 256 << 20);
    EXPECT_EQ(sensor.ConfigRead(folder.File(kFile)), 1);
    EXPECT_EQ(ValuesOf(sensor)[0], 2.0);
}

TEST(ParameterFile, LosesNothingWhereMemoryRunsOut)
{
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    const TestFolder folder;
    const CString path = folder.File(kFile);
    CInclineSensor_Position rising = With(Rising());
    ASSERT_EQ(rising.ConfigSave(path), 1);
    const std::string newContent = folder.Read(kFile);

    const long saves = reference::ForEveryFailingAllocation([&](auto& round) {
        folder.Write(kFile, "old");
        int result = 1;
        EXPECT_NO_THROW(result = round.Run([&, copy = path]() mutable {
            return rising.ConfigSave(std::move(copy));
        }));
        if (!round.HasFailed()) {
            EXPECT_EQ(result, 1);
        }
        EXPECT_EQ(folder.Read(kFile), result == 1 ? newContent : "old");
        EXPECT_EQ(folder.Names().size(), 1U) << "nothing beside it";
    });
    EXPECT_GT(saves, 0);

    ASSERT_EQ(rising.ConfigSave(path), 1);
    const long reads = reference::ForEveryFailingAllocation([&](auto& round) {
        CInclineSensor_Position sensor;
        int result = 1;
        EXPECT_NO_THROW(result = round.Run([&, copy = path]() mutable {
            return sensor.ConfigRead(std::move(copy));
        }));
        if (!round.HasFailed()) {
            EXPECT_EQ(result, 1);
        }
        EXPECT_EQ(ValuesOf(sensor), result == 1 ? Rising() : kDefaults);
    });
    EXPECT_GT(reads, 0);
}

TEST(ParameterFile, ReadsTextThatIsNotANumberAsZero)
{
    for (const char* text : {"abc", "nan", "inf", "0x12", "1e999", "--1"}) {
        Values expected = kDefaults;
        expected[1] = 0.0;
        EXPECT_EQ(ReadFrom(std::string("[MagneticA.b]") + text + "\r\n"), expected) << text;
    }
}

TEST(ParameterFile, FindsItsKeysInAnyOrderAndAnyLine)
{
    std::string content = "a note\r\n";
    Values expected;
    for (std::size_t i = kKeys.size(); i-- > 0;) {
        expected[i] = -0.5 * static_cast<double>(i);
        content += std::string("; [") + kKeys[i] + "] " + std::to_string(expected[i]) + " text\r\n";
    }
    content += "[MagneticA.a]77\r\n"; // a second occurrence
    EXPECT_EQ(ReadFrom(content), expected);
}

TEST(ParameterFile, FindsAKeyInsideTheValueOfAnother)
{
    Values expected = kDefaults;
    expected[0] = 0.0; // "[MagneticA.b]2" is not a number
    expected[1] = 2.0;
    EXPECT_EQ(ReadFrom("[MagneticA.a][MagneticA.b]2\r\n"), expected);
}

TEST(ParameterFile, TurnsTheTipByTheBiasItRead)
{
    const TestFolder folder;
    folder.Write(kFile, "[MagneticBiasAngle_A]90\r\n");
    CInclineSensor_Position sensor;
    sensor.ConfigRead(folder.File(kFile));
    PoseSensorData sample;
    sample.dRoll = 10;
    sample.dPitch = 5;
    sample.dMag_x = 200;
    xyhCoordinate turned;
    xyhCoordinate straight;
    sensor.Position(sample, 2, turned);
    sensor.SetMagneticBiasAngle_A(0);
    sensor.Position(sample, 2, straight);
    EXPECT_NEAR(turned.x, straight.y, 1e-12);
    EXPECT_NEAR(turned.y, -straight.x, 1e-12);
}

TEST(ParameterFile, CannotBeReadWhereItIsMissing)
{
    const TestFolder folder;
    std::filesystem::create_directory(folder.Native() / "sub");
    CInclineSensor_Position sensor = With(Rising());
    EXPECT_EQ(sensor.ConfigRead(folder.File("missing.cfg")), 0);
    EXPECT_EQ(sensor.ConfigRead(folder.File("sub")), 0);
    EXPECT_EQ(sensor.ConfigRead(L""), 0);
    EXPECT_EQ(ValuesOf(sensor), Rising());
}

TEST(ParameterFile, AcceptsAnyPath)
{
    const TestFolder folder;
    CInclineSensor_Position sensor = With(Rising());
    const CString path = folder.File("Messung 磁力计 ä.cfg");
    EXPECT_EQ(sensor.ConfigSave(path), 1);
    CInclineSensor_Position read;
    EXPECT_EQ(read.ConfigRead(path), 1);
    EXPECT_EQ(ValuesOf(read), Rising());
}

TEST(ParameterFile, SurvivesAnyContent)
{
    std::mt19937 random(3);
    std::uniform_int_distribution<int> byte(0, 255);
    std::string noise(1 << 20, '\0');
    for (char& c : noise)
        c = static_cast<char>(byte(random));
    EXPECT_EQ(ReadFrom(noise), kDefaults);
    EXPECT_EQ(ReadFrom(std::string(10 << 20, '[')), kDefaults);
    EXPECT_EQ(ReadFrom("[MagneticA.b" + std::string(1 << 20, ']')), kDefaults) << "no CR";

    Values expected = kDefaults;
    expected[1] = 0.0;
    EXPECT_EQ(ReadFrom("[MagneticA.b]" + std::string(10 << 20, '9') + "\r\n"), expected)
        << "a number beyond every range";
    EXPECT_EQ(ReadFrom("[MagneticA.b]" + std::string(10 << 20, ' ') + "\r\n"), expected)
        << "white space alone is a text that is no number";
}

// However a save fails, the old file is unchanged and no other file remains.
void CheckFailedSave(CInclineSensor_Position sensor, const char* why)
{
    const TestFolder folder;
    folder.Write(kFile, "old");
    EXPECT_EQ(sensor.ConfigSave(folder.File(kFile)), 0) << why;
    EXPECT_EQ(folder.Read(kFile), "old") << why;
    EXPECT_EQ(folder.Names().size(), 1U) << why;
}

TEST(ParameterFile, IsKeptWhenAValueCannotBeWritten)
{
    for (std::size_t i = 0; i < kKeys.size(); ++i)
        for (const double value : {std::numeric_limits<double>::quiet_NaN(),
                                   -std::numeric_limits<double>::infinity(), 1e80}) {
            Values values = Rising();
            values[i] = value;
            CheckFailedSave(With(values), kKeys[i]);
        }
}

TEST(ParameterFile, TakesTheLargestValueThatFitsALine)
{
    const TestFolder folder;
    Values values = Rising();
    values[0] = 2e73; // 13 for the key, 74 digits, point and ten decimals, CR LF: 100 bytes
    CInclineSensor_Position sensor = With(values);
    EXPECT_EQ(sensor.ConfigSave(folder.File(kFile)), 1);
    EXPECT_EQ(folder.Read(kFile).find("\r\n"), 98U);
    values[0] = 2e74;
    CheckFailedSave(With(values), "101 bytes");
}

TEST(ParameterFile, CannotBeSavedWhereNoFileCanBe)
{
    const TestFolder folder;
    std::filesystem::create_directory(folder.Native() / "sub");
    CInclineSensor_Position sensor;
    EXPECT_EQ(sensor.ConfigSave(folder.File("sub")), 0) << "a folder";
    EXPECT_EQ(sensor.ConfigSave(folder.File("missing/a.cfg")), 0)
        << "in a folder that is not there";
    EXPECT_EQ(sensor.ConfigSave(L""), 0);
    EXPECT_EQ(sensor.ConfigSave(L"/dev/full"), 0) << "a full device";
    EXPECT_EQ(folder.Names().size(), 1U);
}

TEST(ParameterFile, IsKeptWhenTheDiskFills)
{
    const TestFolder folder;
    folder.Write(kFile, "old");
    CInclineSensor_Position sensor = With(Rising());
    const CString path = folder.File(kFile);
    const pid_t child = InChild([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{300, 300}; // largest file size [bytes]
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return 2;
        return sensor.ConfigSave(path);
    });
    ASSERT_GT(child, 0);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "answers 0";
    EXPECT_EQ(folder.Read(kFile), "old");
    EXPECT_EQ(folder.Names().size(), 1U);
}

TEST(ParameterFile, IsOldOrNewWheneverTheProgramIsKilled)
{
    const TestFolder folder;
    const CString path = folder.File(kFile);
    CInclineSensor_Position first = With(Rising());
    CInclineSensor_Position second;
    ASSERT_EQ(second.ConfigSave(path), 1);
    const std::string newContent = folder.Read(kFile);
    ASSERT_EQ(first.ConfigSave(path), 1);
    const std::string oldContent = folder.Read(kFile);

    std::mt19937 random(6);
    std::uniform_int_distribution<int> microseconds(0, 3000);
    for (int i = 0; i < 30; ++i) {
        const pid_t child = InChild([&]() -> int {
            for (;;) {
                first.ConfigSave(path);
                second.ConfigSave(path);
            }
        });
        ASSERT_GT(child, 0);
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        const std::string content = folder.Read(kFile);
        EXPECT_TRUE(content == oldContent || content == newContent) << content;
    }
}

} // namespace
