// SPDX-License-Identifier: MIT
#include "framework/core/Paths.h"

#include "tests/framework/core/Folder.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Sets or clears an environment variable for a scope.
class Environment
{
public:
    Environment(const char* name, const char* value) : m_name(name)
    {
        if (const char* before = std::getenv(name)) m_before = before;
        Set(value);
    }
    ~Environment() { Set(m_before ? m_before->c_str() : nullptr); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    void Set(const char* value) const
    {
        if (value == nullptr)
            ::unsetenv(m_name);
        else
            ::setenv(m_name, value, 1);
    }

    const char* m_name;
    std::optional<std::string> m_before;
};

struct ModulePathScope
{
    ~ModulePathScope() { framework::SetModulePath(L""); }
};

} // namespace

TEST(FileAttributes, DistinguishFilesFoldersAndMissingNames)
{
    const TestFolder folder;
    folder.Write("\xC3\xA4", "x");
    EXPECT_EQ(GetFileAttributesW(folder.File(L"\u00E4")), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(GetFileAttributesW(folder.Path()), FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_EQ(GetFileAttributesW(folder.File(L"none")), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetFileAttributesW(L""), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetFileAttributesW(nullptr), INVALID_FILE_ATTRIBUTES);
    ::chmod((folder.Native() / "\xC3\xA4").c_str(), 0444);
    EXPECT_EQ(GetFileAttributesW(folder.File(L"\u00E4")), FILE_ATTRIBUTE_READONLY);
}

TEST(ModuleFileName, IsTheRunningExecutableByDefault)
{
    std::array<wchar_t, 4096> buffer{};
    const DWORD length = GetModuleFileNameW(nullptr, buffer.data(), 4096);
    const CString name(buffer.data());
    EXPECT_EQ(static_cast<DWORD>(name.GetLength()), length);
    EXPECT_EQ(name.Mid(name.ReverseFind(L'/') + 1), L"framework_core_tests");
    EXPECT_EQ(name[0], L'/');
}

TEST(ModuleFileName, IsWhatTheHostSet)
{
    const ModulePathScope restore;
    framework::SetModulePath(L"/opt/\u00E4/host");
    std::array<wchar_t, 32> buffer{};
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), 32), 11u);
    EXPECT_STREQ(buffer.data(), L"/opt/\u00E4/host");
}

TEST(ModuleFileName, IsTruncatedToTheBufferAndTerminated)
{
    const ModulePathScope restore;
    framework::SetModulePath(L"/opt/host");
    std::array<wchar_t, 12> buffer;
    buffer.fill(L'#');
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), 10), 9u) << "just fits";
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), 9), 9u) << "one too small";
    EXPECT_STREQ(buffer.data(), L"/opt/hos");
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), 1), 1u);
    EXPECT_STREQ(buffer.data(), L"");
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), 0), 0u);
    EXPECT_EQ(GetModuleFileNameW(nullptr, nullptr, 12), 0u);
    EXPECT_EQ(buffer[11], L'#');
}

TEST(ApplicationDataFolder, FollowsTheDataHome)
{
    const Environment data("XDG_DATA_HOME", "/data/\xC3\xA4/");
    EXPECT_EQ(framework::ApplicationDataFolder(), L"/data/\u00E4/tiltpole");
}

TEST(ApplicationDataFolder, IsInTheHomeFolderWithoutADataHome)
{
    const Environment home("HOME", "/home/surveyor");
    for (const char* useless : {static_cast<const char*>(nullptr), "", "relative/data"}) {
        const Environment data("XDG_DATA_HOME", useless);
        EXPECT_EQ(framework::ApplicationDataFolder(), L"/home/surveyor/.local/share/tiltpole");
    }
}

TEST(ApplicationDataFolder, IsAbsoluteEvenWithoutAHome)
{
    const Environment data("XDG_DATA_HOME", nullptr);
    const Environment home("HOME", nullptr);
    EXPECT_EQ(framework::ApplicationDataFolder()[0], L'/');
}

TEST(ApplicationDataFolder, HasNoDoubleSeparatorWhereTheHomeEndsWithOne)
{
    const Environment data("XDG_DATA_HOME", nullptr);
    const Environment state("XDG_STATE_HOME", nullptr);
    {
        const Environment home("HOME", "/"); // as of an account without a home folder
        EXPECT_EQ(framework::ApplicationDataFolder(), L"/.local/share/tiltpole");
        EXPECT_EQ(framework::ApplicationStateFolder(), L"/.local/state/tiltpole");
    }
    const Environment home("HOME", "/home/surveyor/");
    EXPECT_EQ(framework::ApplicationDataFolder(), L"/home/surveyor/.local/share/tiltpole");
}

// In a process of its own: a user who is in no list has no home.
TEST(ApplicationDataFolder, IsInTheRootFolderWithoutAHome)
{
    if (::geteuid() != 0) GTEST_SKIP() << "no rights to be another user";
    const Environment home("HOME", nullptr);
    const Environment data("XDG_DATA_HOME", nullptr);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        constexpr uid_t kUnknown = 1234567;
        if (::setresuid(kUnknown, kUnknown, kUnknown) != 0) ::_exit(2);
        const CString folder = framework::ApplicationDataFolder();
        ::_exit(folder == L"/.local/share/tiltpole" ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(ApplicationDataFolder, IsNotCreatedByTheQuery)
{
    const TestFolder folder;
    const Environment data("XDG_DATA_HOME", folder.Native().c_str());
    framework::ApplicationDataFolder();
    EXPECT_TRUE(folder.Names().empty());
}

TEST(ApplicationStateFolder, FollowsTheStateHomeOrIsInTheHomeFolder)
{
    const Environment home("HOME", "/home/surveyor");
    const Environment data("XDG_DATA_HOME", "/data");
    {
        const Environment state("XDG_STATE_HOME", "/state/");
        EXPECT_EQ(framework::ApplicationStateFolder(), L"/state/tiltpole");
    }
    const Environment state("XDG_STATE_HOME", nullptr);
    EXPECT_EQ(framework::ApplicationStateFolder(), L"/home/surveyor/.local/state/tiltpole");
}

TEST(MakeFolder, CreatesAllThatIsMissing)
{
    const TestFolder folder;
    EXPECT_TRUE(framework::MakeFolder(folder.File(L"a/\u00E4/c")));
    EXPECT_TRUE(std::filesystem::is_directory(folder.Native() / "a/\xC3\xA4/c"));
    EXPECT_TRUE(framework::MakeFolder(folder.File(L"a/\u00E4/c"))) << "there already";
    folder.Write("file", "x");
    EXPECT_FALSE(framework::MakeFolder(folder.File(L"file")));
    EXPECT_FALSE(framework::MakeFolder(folder.File(L"file/below")));
    EXPECT_FALSE(framework::MakeFolder(L""));
}

TEST(FollowLinks, EndsWhereLinksFormALoop)
{
    const TestFolder folder;
    const std::string link = (folder.Native() / "loop").string();
    std::filesystem::create_symlink("loop", link);
    EXPECT_EQ(framework::FollowLinks(link), link);
}
