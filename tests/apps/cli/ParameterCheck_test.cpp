// SPDX-License-Identifier: MIT
#include "apps/cli/ParameterCheck.h"

#include "apps/tables/Errors.h"
#include "tests/apps/ScratchFile.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using apps::test::ReadAll;
using apps::test::ScratchFolder;
using cli::CheckParameters;
using cli::LoadParameters;
using testing::EndsWith;
using testing::HasSubstr;

std::string Saved()
{
    const ScratchFolder folder;
    CInclineSensor_Position position;
    position.SetMagneticBiasAngle_A(12.5);
    EXPECT_EQ(position.ConfigSave(folder.Path("pole.cfg").c_str()), 1);
    return ReadAll(folder.Path("pole.cfg"));
}

// The saved file with one text replaced by another.
std::string Saved(const std::string& text, const std::string& by)
{
    std::string content = Saved();
    const auto at = content.find(text);
    EXPECT_NE(at, std::string::npos) << text;
    return content.replace(at, text.size(), by);
}

std::string Complaint(const std::string& content, bool partial = false)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("pole.cfg", content);
    CInclineSensor_Position position;
    try {
        LoadParameters(path, position, partial);
    } catch (const tables::InputError& error) {
        EXPECT_EQ(position.GetMagneticBiasAngle_A(), 0.0) << "loaded anyway";
        return std::string(error.what()).substr(path.size() - std::string("pole.cfg").size());
    }
    EXPECT_EQ(position.GetMagneticBiasAngle_A(), 12.5);
    return {};
}

TEST(ParameterCheck, AcceptsAFileThatTheLibrarySaved)
{
    EXPECT_EQ(Complaint(Saved()), "");
}

// The first place that reads "[key]" counts, also behind brackets that open nothing, and with its
// line.
TEST(ParameterCheck, FindsAKeyWhereverItStandsFirst)
{
    EXPECT_EQ(Complaint("[[x[ " + Saved()), "");
    EXPECT_EQ(Complaint("]]\n" + Saved("[MagneticA.b]1.0", "junk [[MagneticA.b]0.0")),
              "pole.cfg:3: MagneticA.b is 0, not between 0.1 and 10");
    EXPECT_EQ(Complaint(Saved() + "[MagneticA.b]0.0\r\n"), "") << "a second place does not count";
}

TEST(ParameterCheck, ReportsImplausibleKeys)
{
    struct Case
    {
        const char* text;
        const char* by;
        const char* expected;
    };
    constexpr Case cases[] = {
        {"[MagneticA.b]1.0",           "[MagneticA.b]0.0",
         "pole.cfg:2: MagneticA.b is 0, not between 0.1 and 10"                                },
        {"[MagneticB.e]1.0000000000",  "[MagneticB.e]-1",
         "pole.cfg:13: MagneticB.e is -1, not between 0.1 and 10"                              },
        {"[MagneticA.d]0.0000000000",  "[MagneticA.d]5.1",
         "pole.cfg:4: MagneticA.d is 5.1, not between -5 and 5"                                },
        {"[CoorTrans.dX]0.0000000000", "[CoorTrans.dX]abc",
         "pole.cfg:17: CoorTrans.dX is 'abc', not a number"                                    },
        {"[CoorTrans.dX]0.0000000000", "[CoorTrans.dX]",
         "pole.cfg:17: CoorTrans.dX is '', not a number"                                       },
        {"[MagneticB.z0]0.0000000000", "[MagneticB.z0]nan",
         "pole.cfg:16: MagneticB.z0 is 'nan', not a number"                                    },
        {"[MagneticA.x0]",             "[MagneticA.X0]",    "pole.cfg: MagneticA.x0 is missing"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Complaint(Saved(c.text, c.by)), c.expected);
}

TEST(ParameterCheck, ReportsEveryProblem)
{
    const std::string complaint = Complaint("[MagneticBiasAngle_A]12.5\r\n");
    EXPECT_THAT(complaint, HasSubstr("MagneticA.a is missing; MagneticA.b is missing;"));
    EXPECT_THAT(complaint, EndsWith("MagneticBiasAngle_B is missing"));
    const ScratchFolder folder;
    EXPECT_EQ(CheckParameters(folder.Write("pole.cfg", "")).size(), 21U);
}

TEST(ParameterCheck, LineEndsWithoutCarriageReturnAreNotRead)
{
    std::string content = Saved();
    std::erase(content, '\r');
    EXPECT_THAT(Complaint(content), HasSubstr("pole.cfg:1: MagneticA.a is not read"));
}

TEST(ParameterCheck, AcceptsMissingKeysOnRequest)
{
    EXPECT_EQ(Complaint("[MagneticBiasAngle_A]12.5\r\n", true), "");
    EXPECT_EQ(Complaint("[MagneticBiasAngle_A]12.5\r\n[MagneticA.e]x\r\n", true),
              "pole.cfg:2: MagneticA.e is 'x', not a number");
}

TEST(ParameterCheck, AFileThatCannotBeReadIsAnError)
{
    const ScratchFolder folder;
    EXPECT_THROW(CheckParameters(folder.Path("none.cfg")), tables::InputError);
    EXPECT_THROW(CheckParameters(folder.Path("")), tables::InputError) << "a folder";
}

} // namespace
