// SPDX-License-Identifier: MIT
#include "quality/ParameterFile.h"

#include "tests/ScratchFolder.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace {

using quality::CheckParameters;
using quality::CheckParameterText;
using quality::LoadParameters;
using quality::LoadParameterText;
using quality::ParameterKeys;
using testing::ElementsAre;

using testing::IsEmpty;

using Texts = std::vector<std::string>;

// All twenty-one values differ, and no default is among them.
CInclineSensor_Position Calibrated()
{
    CInclineSensor_Position position;
    position.SetMagneticCorrectPar_A({11, 12, 13, 0.1, 0.2, 0.3, 1.1, 1.2});
    position.SetMagneticCorrectPar_B({-11, -12, -13, -0.1, -0.2, -0.3, 0.9, 0.8});
    position.SetMagneticTranslationPar({4, 5, 6});
    position.SetMagneticBiasAngle_A(12.5);
    position.SetMagneticBiasAngle_B(-7.25);
    return position;
}

std::string Saved(const ScratchFolder& folder, CInclineSensor_Position position)
{
    EXPECT_EQ(position.ConfigSave(folder.Path("saved.cfg").c_str()), 1);
    return folder.Read("saved.cfg");
}

std::string Saved()
{
    return Saved(ScratchFolder(), Calibrated());
}

std::string Saved(const std::string& text, const std::string& by)
{
    std::string content = Saved();
    const auto at = content.find(text);
    EXPECT_NE(at, std::string::npos) << text;
    return content.replace(at, text.size(), by);
}

Texts TextsOf(const std::vector<quality::ParameterProblem>& problems)
{
    Texts texts;
    for (const auto& problem : problems)
        texts.push_back(ToText(problem));
    return texts;
}

Texts Problems(const std::string& content, ParameterKeys keys = ParameterKeys::All)
{
    return TextsOf(CheckParameterText(content, keys));
}

TEST(ParameterCheck, LoadsWhatConfigReadLoads)
{
    const ScratchFolder folder;
    const std::string saved = Saved(folder, Calibrated());
    CInclineSensor_Position loaded;
    EXPECT_THAT(LoadParameters(folder.Path("saved.cfg").c_str(), loaded), IsEmpty());
    CInclineSensor_Position read;
    ASSERT_EQ(read.ConfigRead(folder.Path("saved.cfg").c_str()), 1);
    EXPECT_EQ(Saved(folder, loaded), saved);
    EXPECT_EQ(Saved(folder, read), saved);
}

// The member of the heading that the bias turns follows it.
TEST(ParameterCheck, TurnsTheTipAsConfigReadDoes)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("pole.cfg", Saved());
    CInclineSensor_Position loaded;
    CInclineSensor_Position read;
    EXPECT_THAT(LoadParameters(path.c_str(), loaded), IsEmpty());
    ASSERT_EQ(read.ConfigRead(path.c_str()), 1);
    PoseSensorData sample;
    sample.dRoll = 10.0;
    sample.dMag_x = 300.0;
    sample.dMag_y = 400.0;
    PoseSensorData again = sample;
    xyhCoordinate byLoaded{100, 200, 50};
    xyhCoordinate byRead = byLoaded;
    loaded.Position(sample, 2.0, byLoaded);
    read.Position(again, 2.0, byRead);
    EXPECT_EQ(byLoaded.x, byRead.x);
    EXPECT_EQ(byLoaded.y, byRead.y);
    EXPECT_EQ(byLoaded.h, byRead.h);
    EXPECT_EQ(sample.dYaw_2, again.dYaw_2);
}

// ConfigRead reads both numbers as 0, returns 1, and the tip is 0.28 m off.
TEST(ParameterCheck, LoadsNothingOfADamagedFile)
{
    const ScratchFolder folder;
    std::string damaged = Saved("[MagneticA.b]1.1000000000", "[MagneticA.b]nan");
    damaged.replace(damaged.find("1.2000000000"), 12, "garbage");
    CInclineSensor_Position position = Calibrated();
    position.SetMagneticBiasAngle_A(99.0);
    const std::string before = Saved(folder, position);
    EXPECT_THAT(TextsOf(LoadParameters(folder.Write("pole.cfg", damaged).c_str(), position)),
                ElementsAre("line 2: MagneticA.b is 'nan', not a number",
                            "line 5: MagneticA.e is 'garbage', not a number"));
    EXPECT_EQ(Saved(folder, position), before);
}

// The key that the text ends within is missing, whatever follows in memory.
TEST(ParameterCheck, ReadsNothingBehindTheText)
{
    const std::string content = "[MagneticBiasAngle_A]\r0";
    const std::string cut = content.substr(0, content.find(']'));
    EXPECT_EQ(TextsOf(CheckParameterText(std::string_view(content).substr(0, cut.size()))),
              Problems(cut));
}

// The first place that reads "[key]" counts, also behind brackets that open nothing, and with its
// line.
TEST(ParameterCheck, FindsAKeyWhereverItStandsFirst)
{
    EXPECT_THAT(Problems("[[x[ " + Saved()), IsEmpty());
    EXPECT_THAT(Problems("]]\n" + Saved("[MagneticA.b]1.1", "junk [[MagneticA.b]0.0")),
                ElementsAre("line 3: MagneticA.b is 0, not between 0.1 and 10"));
    EXPECT_THAT(Problems(Saved() + "[MagneticA.b]0.0\r\n"), IsEmpty())
        << "a second place does not count";
    EXPECT_THAT(Problems(Saved("[MagneticA.c]", "[MagneticA.b]0.0\r\n[MagneticA.c]")), IsEmpty())
        << "before the others neither";
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
        {"[MagneticA.b]1.1",             "[MagneticA.b]0.0",
         "line 2: MagneticA.b is 0, not between 0.1 and 10"                                       },
        {"[MagneticB.e]0.8000000000",    "[MagneticB.e]-1",
         "line 13: MagneticB.e is -1, not between 0.1 and 10"                                     },
        {"[MagneticA.d]0.3000000000",    "[MagneticA.d]5.1",
         "line 4: MagneticA.d is 5.1, not between -5 and 5"                                       },
        {"[CoorTrans.dX]4.0000000000",   "[CoorTrans.dX]abc",
         "line 17: CoorTrans.dX is 'abc', not a number"                                           },
        {"[CoorTrans.dX]4.0000000000",   "[CoorTrans.dX]4 counts",
         "line 17: CoorTrans.dX is '4 counts', not a number"                                      },
        {"[CoorTrans.dX]4.0000000000",   "[CoorTrans.dX]",
         "line 17: CoorTrans.dX is '', not a number"                                              },
        {"[CoorTrans.dX]4.0000000000",   "[CoorTrans.dX]1e308",
         "line 17: CoorTrans.dX is 1e+308, not between -1000000 and 1000000"                      },
        {"[CoorTrans.dX]4.0000000000",   "[CoorTrans.dX]1e999",
         "line 17: CoorTrans.dX is '1e999', not a number"                                         },
        {"[MagneticB.z0]-13.0000000000", "[MagneticB.z0]nan",
         "line 16: MagneticB.z0 is 'nan', not a number"                                           },
        {"[MagneticB.z0]-13.0000000000", "[MagneticB.z0]-1000001",
         "line 16: MagneticB.z0 is -1000001, not between -1000000 and 1000000"                    },
        {"[MagneticBiasAngle_A]12.5",    "[MagneticBiasAngle_A]361.5",
         "line 20: MagneticBiasAngle_A is 361.5, not between -360 and 360"                        },
        {"[MagneticBiasAngle_B]-7.25",   "[MagneticBiasAngle_B]\x1b[2J",
         "line 21: MagneticBiasAngle_B is '?[2J00000000', not a number"                           },
        {"[MagneticBiasAngle_B]-7.25",   "[MagneticBiasAngle_B]\x7fx",
         "line 21: MagneticBiasAngle_B is '?x00000000', not a number"                             },
        {"[MagneticA.x0]",               "[MagneticA.X0]",               "MagneticA.x0 is missing"},
    };
    for (const Case& c : cases)
        EXPECT_THAT(Problems(Saved(c.text, c.by)), ElementsAre(c.expected));
}

TEST(ParameterCheck, AcceptsBlanksAroundANumber)
{
    EXPECT_THAT(Problems(Saved("[MagneticA.b]1.1000000000", "[MagneticA.b] \t1.1 ")), IsEmpty());
}

TEST(ParameterCheck, ReportsEveryProblem)
{
    const Texts texts = Problems("[MagneticBiasAngle_A]12.5\r\n");
    ASSERT_EQ(texts.size(), 20U);
    EXPECT_EQ(texts.front(), "MagneticA.a is missing");
    EXPECT_EQ(texts.back(), "MagneticBiasAngle_B is missing");
    EXPECT_EQ(Problems("").size(), 21U);
}

TEST(ParameterCheck, LineEndsWithoutCarriageReturnAreNotRead)
{
    std::string content = Saved();
    std::erase(content, '\r');
    const Texts texts = Problems(content);
    ASSERT_EQ(texts.size(), 21U);
    EXPECT_EQ(texts.front(), "line 1: MagneticA.a is not read, because no line from there on ends "
                             "with CR LF");
}

TEST(ParameterCheck, MissingKeysKeepTheirValuesOnRequest)
{
    CInclineSensor_Position position = Calibrated();
    EXPECT_THAT(LoadParameterText("[MagneticA.b]1.5\r\n", position, ParameterKeys::Some),
                IsEmpty());
    EXPECT_EQ(position.GetMagneticCorrectPar_A().b, 1.5);
    EXPECT_EQ(position.GetMagneticCorrectPar_A().e, 1.2);
    EXPECT_EQ(position.GetMagneticBiasAngle_B(), -7.25);
    EXPECT_THAT(Problems("[MagneticA.b]1.5\r\n[MagneticA.e]x\r\n", ParameterKeys::Some),
                ElementsAre("line 2: MagneticA.e is 'x', not a number"));
}

TEST(ParameterCheck, NamesTheFileThatCannotBeRead)
{
    const ScratchFolder folder;
    EXPECT_THAT(TextsOf(CheckParameters(folder.Path("none.cfg").c_str())),
                ElementsAre("the file cannot be read"));
    EXPECT_THAT(TextsOf(CheckParameters(folder.Path("").c_str())),
                ElementsAre("the file cannot be read"))
        << "a folder";
}

// A device without an end stops at the limit, as does a file.
TEST(ParameterCheck, ReadsUpToItsLimit)
{
    EXPECT_THAT(TextsOf(CheckParameters("/dev/zero")),
                ElementsAre("the file is larger than 64 MiB"));
    const ScratchFolder folder;
    std::string content = Saved();
    content.resize(quality::kLargestParameterFile, ' ');
    EXPECT_THAT(CheckParameters(folder.Write("full.cfg", content).c_str()), IsEmpty());
    EXPECT_THAT(TextsOf(CheckParameters(folder.Write("over.cfg", content + ' ').c_str())),
                ElementsAre("the file is larger than 64 MiB"));
}

// Fifty million brackets take a pass over them, not one for each: seconds at most, with a sanitizer.
TEST(ParameterCheck, PassesOverBracketsOnce)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    std::string content(50'000'000, '[');
    EXPECT_EQ(CheckParameterText(content).size(), 21U);
    content += Saved();
    EXPECT_THAT(Problems(content), IsEmpty());
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
}

} // namespace
