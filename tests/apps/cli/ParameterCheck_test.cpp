// SPDX-License-Identifier: MIT
#include "apps/cli/ParameterCheck.h"

#include "apps/cli/ParameterOutput.h"
#include "apps/tables/Errors.h"
#include "quality/ParameterFile.h"
#include "tests/apps/ScratchFile.h"
#include <cerrno>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <system_error>

namespace {

using apps::test::ScratchFolder;

// What a program says of a file pole.cfg with this content.
std::string Complaint(const std::string& content, bool partial = false)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("pole.cfg", content);
    CInclineSensor_Position position;
    try {
        cli::LoadParameters(path, position, partial);
    } catch (const tables::InputError& error) {
        EXPECT_EQ(position.GetMagneticBiasAngle_A(), 0.0) << "loaded anyway";
        return std::string(error.what()).substr(path.size() - std::string("pole.cfg").size());
    }
    return {};
}

TEST(LoadParameters, NamesFileAndLineOfTheFirstProblemAndListsAll)
{
    EXPECT_EQ(Complaint("[MagneticBiasAngle_A]12.5\r\n[MagneticB.e]x\r\n[MagneticA.e]40\r\n", true),
              "pole.cfg:3: MagneticA.e is 40, not between 0.1 and 10; MagneticB.e is 'x', not a "
              "number");
    EXPECT_EQ(Complaint("").rfind("pole.cfg: MagneticA.a is missing; MagneticA.b is missing; ", 0),
              0U);
}

TEST(LoadParameters, AcceptsMissingKeysOnRequest)
{
    EXPECT_EQ(Complaint("[MagneticBiasAngle_A]12.5\r\n", true), "");
    EXPECT_NE(Complaint("[MagneticBiasAngle_A]12.5\r\n", false), "");
}

TEST(LoadParameters, NamesUtf16InsteadOfEveryKey)
{
    std::string utf16;
    for (const char c : std::string("[MagneticBiasAngle_A]12.5\r\n"))
        utf16 += {c, '\0'};
    constexpr const char* kWhy = "pole.cfg: is not UTF-8 (UTF-16?): save it as UTF-8";
    for (const std::string& content : {utf16, "\xFF\xFE" + utf16}) {
        EXPECT_EQ(Complaint(content), kWhy);
        EXPECT_EQ(Complaint(content, true), kWhy) << "with missing keys accepted";
    }
}

TEST(LoadParameters, AFileThatCannotBeReadIsAnError)
{
    const ScratchFolder folder;
    CInclineSensor_Position position;
    EXPECT_THROW(cli::LoadParameters(folder.Path("none.cfg"), position), tables::InputError);
    EXPECT_THROW(cli::LoadParameters(folder.Path(""), position), tables::InputError) << "a folder";
}

TEST(ParameterText, IsRefusedWhereNoProgramWouldLoadIt)
{
    CInclineSensor_Position position;
    position.SetMagneticTranslationPar({2e6, 0.0, 0.0});
    EXPECT_THROW(cli::ParameterText("pole.cfg", position), tables::InputError);
    position.SetMagneticTranslationPar({2e5, 0.0, 0.0});
    const std::string text = cli::ParameterText("pole.cfg", position);
    EXPECT_EQ(Complaint(text), "");
}

TEST(ParameterText, KeepsTenDecimalsOfEveryValue)
{
    CInclineSensor_Position position;
    const double last = 1.0 / 3.0;
    Incline_MagneticCorrectParameter par = position.GetMagneticCorrectPar_A();
    par.x0 = 9e5 + last;
    par.y0 = -4e5 - last;
    par.z0 = last;
    par.a = -last;
    par.e = 1.0 + last;
    position.SetMagneticCorrectPar_A(par);
    par.c = 1e-10;
    par.d = 1e-11;
    position.SetMagneticCorrectPar_B(par);
    position.SetMagneticTranslationPar({1.0 + last, 2.0 + last, -3.0 - last});
    position.SetMagneticBiasAngle_A(-300.0 - last);
    position.SetMagneticBiasAngle_B(last);
    const std::string text = cli::ParameterText("pole.cfg", position);
    EXPECT_NE(text.find("[MagneticA.z0]0.3333333333\r"), text.npos) << text;
    EXPECT_NE(text.find("[MagneticBiasAngle_A]-300.3333333333\r"), text.npos) << text;
    CInclineSensor_Position loaded;
    ASSERT_TRUE(quality::LoadParameterText(text, loaded).empty());
    EXPECT_EQ(cli::ParameterText("pole.cfg", loaded), text);
}

// The program may open no descriptor.
class NoDescriptors
{
public:
    NoDescriptors()
    {
        // The sanitizers look at a type once, for which they need a descriptor.
        static_cast<void>(std::generic_category().message(EMFILE));
        EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &m_before), 0);
        const rlimit none{0, m_before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &m_before); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit m_before = {};
};

TEST(ParameterText, NeedsAFileInMemory)
{
    std::string text;
    std::string reason;
    try {
        const NoDescriptors none;
        text = cli::ParameterText("pole.cfg", CInclineSensor_Position());
    } catch (const std::system_error& error) {
        reason = error.what();
    }
    EXPECT_EQ(text, "");
    EXPECT_EQ(reason, "a file in memory: Too many open files");
    EXPECT_NE(cli::ParameterText("pole.cfg", CInclineSensor_Position()), "");
}

} // namespace
