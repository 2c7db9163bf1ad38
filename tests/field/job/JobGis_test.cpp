// SPDX-License-Identifier: MIT
//
// A job as other programs see it.
#include "field/job/JobStore.h"
#include "tests/field/job/JobRows.h"

#include <array>
#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace field::test {
namespace {

using testing::HasSubstr;
using testing::Not;

// Standard output and standard error.
std::string OutputOf(const std::string& command)
{
    std::string text;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return "no pipe";
    std::array<char, 4096> block{};
    for (std::size_t size = 0; (size = fread(block.data(), 1, block.size(), pipe)) > 0;)
        text.append(block.data(), size);
    return pclose(pipe) == 0 ? text : text + "\nfailed";
}

TEST(JobGis, IsAGeoPackageOfVersion1_3)
{
    const ScratchFolder folder;
    ASSERT_TRUE(NewJob(folder.Path("job.gpkg")).AddPoint(SomePoint("P1", 1), SomeEpochs()));
    const PlainLook look(folder.Path("job.gpkg"));
    EXPECT_EQ(look.Ask("PRAGMA application_id"), "1196444487"); // "GPKG"
    EXPECT_EQ(look.Ask("PRAGMA user_version"), "10300");
    EXPECT_EQ(look.Ask("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(look.Ask("PRAGMA foreign_key_check"), "");
    EXPECT_EQ(look.Ask("PRAGMA journal_mode"), "delete");
    EXPECT_EQ(look.Ask("SELECT srs_id FROM gpkg_spatial_ref_sys ORDER BY srs_id"),
              "-1\n0\n4326\n4979");
    EXPECT_EQ(look.Ask("SELECT table_name, data_type, srs_id FROM gpkg_contents "
                       "ORDER BY table_name"),
              "epoch|attributes|NULL\nevent|attributes|NULL\nlean_pair|attributes|NULL\n"
              "point|features|4979\nsetup|attributes|NULL\nstake|attributes|NULL");
    EXPECT_EQ(look.Ask("SELECT * FROM gpkg_geometry_columns"), "point|geom|POINT|4979|1|0");
    EXPECT_FALSE(std::filesystem::exists(folder.Path("job.gpkg-journal")));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("job.gpkg-wal")));
}

TEST(JobGis, StatesTheExtentOfItsPoints)
{
    const ScratchFolder folder;
    JobStore job = NewJob(folder.Path("job.gpkg"));
    const char* extent = "SELECT min_x, min_y, max_x, max_y FROM gpkg_contents "
                         "WHERE table_name = 'point'";
    EXPECT_EQ(PlainLook(folder.Path("job.gpkg")).Ask(extent), "NULL|NULL|NULL|NULL");
    JobPoint point = SomePoint("P1", 1);
    point.tip = {47.5, 19.25, 100.0};
    ASSERT_TRUE(job.AddPoint(point, {}));
    point.name = "P2";
    point.tip = {-46.5, 18.75, 100.0};
    ASSERT_TRUE(job.AddPoint(point, {}));
    EXPECT_EQ(PlainLook(folder.Path("job.gpkg")).Ask(extent), "18.75|-46.5|19.25|47.5");
}

TEST(JobGis, OpensAsAPointInThreeDimensionsWithoutAWarning)
{
    ASSERT_NE(std::string(TILTPOLE_OGRINFO), "") << "ogrinfo is not installed; ./dev test does it";
    const ScratchFolder folder;
    ASSERT_TRUE(NewJob(folder.Path("job.gpkg")).AddPoint(SomePoint("P104", 1), SomeEpochs()));
    const std::string text =
        OutputOf(TILTPOLE_OGRINFO " -ro -al \"" + folder.Path("job.gpkg") + "\"");
    EXPECT_THAT(text, Not(HasSubstr("Warning")));
    EXPECT_THAT(text, Not(HasSubstr("ERROR")));
    EXPECT_THAT(text, Not(HasSubstr("failed")));
    EXPECT_THAT(text, HasSubstr("Geometry: 3D Point"));
    EXPECT_THAT(text, HasSubstr("ID[\"EPSG\",4979]"));
    EXPECT_THAT(text, HasSubstr("POINT Z (19.00835993 47.5660567 230.8054)"));
    EXPECT_THAT(text, HasSubstr("name (String) = P104"));
    EXPECT_THAT(text, HasSubstr("utc (DateTime) = 2026/11/22 12:00:58.200+00"));
    EXPECT_THAT(text, HasSubstr("sd_n_m (Real) = 0.0125"));
    EXPECT_THAT(text, HasSubstr("forced (Integer(Boolean)) = 0"));
    EXPECT_THAT(text, HasSubstr("replaces (Integer64) = (null)"));
    EXPECT_THAT(text, HasSubstr("Layer name: epoch"));
    EXPECT_THAT(text, HasSubstr("why (String) = 31 mm off the median in plan"));
}

} // namespace
} // namespace field::test
