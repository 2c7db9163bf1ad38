// SPDX-License-Identifier: MIT
//
// The allocation sweep through every operation of the core and of the library of quality, and that it
// leaves none out: what the libraries export and what their headers declare is compared with the rows.
#include "tests/ScratchFolder.h"
#include "tests/memory/Rows.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

namespace {

using sweep::Row;

std::vector<Row> AllRows()
{
    std::vector<Row> all;
    for (const auto& rows : {sweep::FrameworkRows(), sweep::MatrixRows(), sweep::PositioningRows(),
                             sweep::CalibrationRows(), sweep::GeometryRows(), sweep::QualityRows()})
        all.insert(all.end(), rows.begin(), rows.end());
    return all;
}

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

TEST_P(AllocationSweep, FailsAsDocumentedAndLosesNothing)
{
    GetParam().check();
}

std::string NameOf(const testing::TestParamInfo<Row>& info)
{
    const std::string first = info.param.covers.substr(0, info.param.covers.find(' '));
    std::string name;
    for (const char c : first)
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) name += c;
    return name + std::to_string(info.index);
}

INSTANTIATE_TEST_SUITE_P(Rows, AllocationSweep, testing::ValuesIn(AllRows()), NameOf);

// Exported for the library's own headers and sources: nothing that a host calls.
const std::set<std::string> kInternal = {
    "CInclineSensor_Filter_XY::Turn",
    "CInclineSensor_Filter_XZ::Turn",
    "CInclineSensor_Position::CalculateYaw_ADI",
    "CInclineSensor_Position::CalculateYaw_SCA",
    "CInclineSensor_Position::Heading",
    "CInclineSensor_Position::HeadingByAxes",
    "CInclineSensor_Position::JudgeInterference",
    "CInclineSensor_Position::JudgeStillness",
    "CInclineSensor_Position::Keep",
    "CInclineSensor_Position::KeepPose",
    "CInclineSensor_Position::MagneticModify",
    "CInclineSensor_Position::MeasureByFormulas",
    "CInclineSensor_Position::PoseOf",
    "CInclineSensor_Position::ProjectionAngle",
    "CKFilter::Factor::Set",
    "CKFilter::HasWholeModel",
    "CKFilter::KeepProcessNoise",
    "CKFilter::NoteSeparateStates",
    "CKFilter::StepSeparately",
    "CMagneticConvert::Prepare",
    "CSZMatrix::Block",
    "CSZMatrix::Clear",
    "CSZMatrix::IsVector3",
    "CSZMatrix::JacobiDouble",
    "CSZMatrix::RotateByProducts",
    "CSZMatrix::RotateLines",
    "CSZMatrix::SetSize",
    "CSZMatrix::isSymmetric",
    "CTiltMatrix::Factor",
    "CTiltMatrix::Failed",
    "CTiltMatrix::Inverse",
    "CTiltMatrix::SetSize",
    "CTiltMatrix::SingularityFigure",
    "CTiltMatrix::TakeFrom",
    "framework::FileReplacement::State::Begin",
    "framework::FileReplacement::State::BeginInFolder",
    "framework::FileReplacement::State::Commit",
    "framework::FileReplacement::State::RenameOrOverwrite",
    "framework::FileReplacement::State::Write",
};

std::set<std::string> Covered()
{
    std::set<std::string> covered;
    for (const Row& row : AllRows()) {
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
    return std::regex_search(symbol, match, kFunction) ? match[1].str() : std::string();
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

TEST(AllocationSweepRows, CoverEveryFunctionThatIsExported)
{
    const std::set<std::string> covered = Covered();
    for (const std::string library : {"core", "quality"}) {
        const std::set<std::string> exported = Exported(library);
        EXPECT_GT(exported.size(), 15U) << library;
        for (const std::string& name : exported)
            EXPECT_TRUE(covered.contains(name) || kInternal.contains(name) || IsDestructor(name))
                << name << " of " << library << " has no row";
    }
}

TEST(AllocationSweepRows, CallNothingInternalThatIsNotExported)
{
    const std::set<std::string> exported = Exported("core");
    const std::set<std::string> covered = Covered();
    for (const std::string& name : kInternal) {
        EXPECT_TRUE(exported.contains(name)) << name << " is no longer exported";
        EXPECT_FALSE(covered.contains(name)) << name << " has a row";
    }
}

// Templates and classes that are whole in their headers are not among the exported functions.
TEST(AllocationSweepRows, CoverEveryClassOfThePublicHeaders)
{
    static const std::regex kClass(
        R"(^(?:class|struct) (?:TILTPOLE_API )?(C[A-Z]\w+)(?: final)?(?: :.*)?$)");
    std::set<std::string> classes;
    for (const std::string& name : Covered())
        classes.insert(name.substr(0, name.find("::")));
    int found = 0;
    std::ifstream headers(TILTPOLE_PUBLIC_HEADERS);
    for (std::string header; std::getline(headers, header);) {
        std::ifstream file(header);
        for (std::string line; std::getline(file, line);) {
            std::smatch match;
            if (!std::regex_match(line, match, kClass)) continue;
            ++found;
            EXPECT_TRUE(classes.contains(match[1].str()))
                << match[1] << " of " << header << " has no row";
        }
    }
    EXPECT_GT(found, 14) << "classes in public headers";
}

} // namespace
