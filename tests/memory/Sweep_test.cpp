// SPDX-License-Identifier: MIT
//
// The allocation sweep through every operation of the libraries of this program (Program.h), and that
// it leaves none out: what the libraries export and what their headers declare is compared with the rows.
#include "tests/ScratchFolder.h"
#include "tests/memory/Program.h"

#include <gmock/gmock.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

namespace {

using sweep::Exception;
using sweep::Library;
using sweep::Row;
using sweep::TheProgram;

class AllocationSweep : public testing::TestWithParam<Row>
{
protected:
    void SetUp() override
    {
        if (!reference::CanFailAllocations())
            GTEST_SKIP() << "another tool's allocator is in place";
        // What is saved by the operations stays here.
        ::setenv("XDG_DATA_HOME", m_folder.Path("data").c_str(), 1);
    }
    void TearDown() override { ::unsetenv("XDG_DATA_HOME"); }

private:
    ScratchFolder m_folder;
};

std::string FirstOf(const Row& row)
{
    return row.covers.substr(0, row.covers.find(' '));
}

bool IsExcepted(const Row& row)
{
    const std::vector<Exception> all = TheProgram().exceptions;
    return std::any_of(all.begin(), all.end(), [&](const Exception& exception) {
        return exception.covers == FirstOf(row);
    });
}

TEST_P(AllocationSweep, FailsAsDocumentedAndLosesNothing)
{
    if (IsExcepted(GetParam()))
        GetParam().checkOurs();
    else
        GetParam().check();
}

std::string LettersOf(const std::string& covers)
{
    std::string name;
    for (const char c : covers)
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) name += c;
    return name;
}

std::string NameOf(const testing::TestParamInfo<Row>& info)
{
    return LettersOf(FirstOf(info.param)) + std::to_string(info.index);
}

INSTANTIATE_TEST_SUITE_P(Rows, AllocationSweep, testing::ValuesIn(TheProgram().rows), NameOf);

class AllocationSweepExceptions : public testing::TestWithParam<Exception>
{};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(AllocationSweepExceptions);

constexpr unsigned kPatience = 5; // seconds; a toolkit may also wait forever

// Whether a row holds where everybody's allocations fail, in a process of its own.
bool Holds(const Row& row)
{
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit noCore{0, 0};
        ::setrlimit(RLIMIT_CORE, &noCore);
        ::close(1);
        ::close(2);
        ::alarm(kPatience);
        testing::GTEST_FLAG(throw_on_failure) = true;
        try {
            row.check();
        } catch (const std::exception&) {
            ::_exit(1);
        }
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST_P(AllocationSweepExceptions, AreNeeded)
{
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    const std::vector<Row> rows = TheProgram().rows;
    const bool areAllHeld = std::all_of(rows.begin(), rows.end(), [](const Row& row) {
        return FirstOf(row) != GetParam().covers || Holds(row);
    });
    EXPECT_FALSE(areAllHeld) << GetParam().covers << " survives every failure";
}

std::string NameOfException(const testing::TestParamInfo<Exception>& info)
{
    return LettersOf(info.param.covers);
}

INSTANTIATE_TEST_SUITE_P(Of, AllocationSweepExceptions, testing::ValuesIn(TheProgram().exceptions),
                         NameOfException);

std::set<std::string> Covered()
{
    std::set<std::string> covered;
    for (const Row& row : TheProgram().rows) {
        std::istringstream names(row.covers);
        covered.insert(std::istream_iterator<std::string>(names), {});
    }
    return covered;
}

// "CString::Find" of "CString::Find(wchar_t, int) const"; empty for objects.
std::string FunctionOf(const std::string& symbol)
{
    static const std::regex kFunction(R"(^((?:\w+::)*~?(?:operator[^(]+|\w+))(?:\[abi:\w+\])?\()");
    std::smatch match;
    std::string name = std::regex_search(symbol, match, kFunction) ? match[1].str() : std::string();
    std::erase(name, ' '); // "operator new"
    return name;
}

std::set<std::string> Exported(const std::string& library)
{
    std::ifstream list(TILTPOLE_SOURCE_DIR "/tests/abi/" + library + ".txt");
    std::set<std::string> names;
    for (std::string line; std::getline(list, line);)
        if (const std::string name = FunctionOf(line); !name.empty()) names.insert(name);
    return names;
}

// A destructor is run by every row of its class.
bool IsDestructor(const std::string& name)
{
    return name.find("::~") != std::string::npos;
}

class AllocationSweepRows : public testing::TestWithParam<Library>
{};

TEST_P(AllocationSweepRows, CoverEveryFunctionThatIsExported)
{
    const std::set<std::string> covered = Covered();
    const std::set<std::string> internal = TheProgram().internal;
    const std::set<std::string> exported = Exported(GetParam().name);
    EXPECT_GT(exported.size(), 4U);
    for (const std::string& name : exported)
        EXPECT_TRUE(covered.contains(name) || internal.contains(name) || IsDestructor(name))
            << name << " has no row";
}

// Templates and classes that are whole in their headers are not among the exported functions.
TEST_P(AllocationSweepRows, CoverEveryClassOfThePublicHeaders)
{
    static const std::regex kClass(
        R"(^(?:(?:class|struct) (?:TILTPOLE_API )?(C[A-Z]\w+)|class TILTPOLE_API (\w+))(?: final)?(?: :.*)?$)");
    std::set<std::string> classes; // and names of functions and namespaces
    for (const std::string& name : Covered()) {
        static const std::regex kPart(R"(\w+)");
        for (std::sregex_iterator part(name.begin(), name.end(), kPart), end; part != end; ++part)
            classes.insert(part->str());
    }
    int found = 0;
    std::ifstream headers(TILTPOLE_PUBLIC_HEADERS "/" + GetParam().name + ".txt");
    for (std::string header; std::getline(headers, header);) {
        std::ifstream file(header);
        for (std::string line; std::getline(file, line);) {
            std::smatch match;
            if (!std::regex_match(line, match, kClass)) continue;
            ++found;
            const std::string name = match[1].matched ? match[1] : match[2];
            EXPECT_TRUE(classes.contains(name)) << name << " of " << header << " has no row";
        }
    }
    EXPECT_GE(found, GetParam().publicClasses) << "classes in public headers";
}

TEST_P(AllocationSweepRows, CallNothingInternalThatIsNotExported)
{
    std::set<std::string> exported;
    for (const Library& library : TheProgram().libraries)
        exported.merge(Exported(library.name));
    const std::set<std::string> covered = Covered();
    for (const std::string& name : TheProgram().internal) {
        EXPECT_TRUE(exported.contains(name)) << name << " is no longer exported";
        EXPECT_FALSE(covered.contains(name)) << name << " has a row";
    }
}

std::string NameOfLibrary(const testing::TestParamInfo<Library>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Of, AllocationSweepRows, testing::ValuesIn(TheProgram().libraries),
                         NameOfLibrary);

} // namespace
