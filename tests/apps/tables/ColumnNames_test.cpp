// SPDX-License-Identifier: MIT
#include "apps/tables/ColumnNames.h"

#include "tests/apps/ScratchFile.h"
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using apps::test::ScratchFolder;
using tables::ColumnChoice;
using tables::ColumnUnit;
using tables::CsvReader;
using tables::InputError;
using testing::HasSubstr;

// "N from column, E from column, h from column" by their positions, or the error behind the file's
// name and line.
std::string Point(const std::string& header, const ColumnChoice& choice = {})
{
    const ScratchFolder folder;
    const CsvReader rows(folder.Write("points.csv", header + "\n"));
    try {
        std::vector<std::string> missing;
        const auto point = FindPointColumns(rows, choice, missing);
        if (!point) return fmt::format("{} missing", missing.size());
        return fmt::format("{} {} {}", point->north, point->east, point->height);
    } catch (const InputError& error) {
        const std::string text = error.what();
        return text.substr(text.find("points.csv:1: ") + 14);
    }
}

TEST(ColumnNames, MatchWithoutCaseAndUnit)
{
    for (const char* header : {
             "N,E,h",
             "n,e,H",
             "x,y,h",
             "X,Y,Z",
             "N [m],E [m],h [m]",
             "N[m],E[m],H[m]",
             "N (m),E (m),H (m)",
             "N / m,E / m,h / m",
             "N_m,E_m,h_m",
             "North (Meters),East (meters),Elevation (metres)",
             "Northing,Easting,Height",
             "NORTHING_M,EASTING_M,ALTITUDE_M",
             "antenna_N_m,antenna_E_m,antenna_h_m",
             "Antenna North [m],Antenna East [m],Antenna Z [m]",
             "N-antenna,E-antenna,h-antenna",
             "antenna.N,antenna.E.m,antenna.h",
             "antenna N,antenna E,antenna\th",
         })
        EXPECT_EQ(Point(header), "0 1 2") << header;
}

TEST(ColumnNames, OtherNamesDoNotMatch)
{
    for (const char* header : {"[m],(m),/m", "tip_N_m,tip_E_m,tip_h_m", "Nord,Ost,Hoehe",
                               "latitude,longitude,hh", "N2,E2,h2", "error_N_m,error_E_m,error_h_m",
                               "N (grid),E (grid),h (ell)", "x_true,y_true,h_true"})
        EXPECT_EQ(Point(header), "3 missing") << header;
}

TEST(ColumnNames, AnAntennaHeightIsALengthAndNoCoordinate)
{
    EXPECT_EQ(Point("antenna_N,antenna_E,antenna_height"), "1 missing");
    EXPECT_EQ(Point("N,E,antenna_height,h"), "0 1 3");
}

TEST(ColumnNames, OfOneKindAndTagGoTogether)
{
    EXPECT_EQ(Point("tip_N_m,antenna_h_m,antenna_E_m,tip_h_m,antenna_N_m,tip_E_m"), "4 2 1");
    EXPECT_EQ(Point("x,E,h"), "the columns E and x do not go together as N and E: choose with "
                              "--columns");
    EXPECT_EQ(Point("antenna_N,E,h"), "the columns antenna_N and E do not go together as N and E: "
                                      "choose with --columns");
    EXPECT_EQ(Point("N,E,antenna_h"), "the column antenna_h does not go with N: choose with "
                                      "--columns");
}

TEST(ColumnNames, TwoColumnsThatCouldBeMeantAreRefusedByName)
{
    EXPECT_EQ(Point("N,Northing,E,h"),
              "N could be the column N or the column Northing: choose with --columns");
    EXPECT_EQ(Point("N,E,Easting,h"),
              "E could be the column E or the column Easting: choose with --columns");
    EXPECT_EQ(Point("x,y,N,E,h"), "N could be the column x or the column N: choose with --columns");
    EXPECT_EQ(Point("N,E,h,Z"), "h could be the column h or the column Z: choose with --columns");
    EXPECT_EQ(Point("N,E,antenna_N,antenna_E,h"),
              "N could be the column N or the column antenna_N: choose with --columns");
    EXPECT_EQ(Point("N,N,E,h"), "the column N appears twice");
}

TEST(ColumnNames, AnotherUnitIsRefused)
{
    EXPECT_EQ(Point("N,E,h [mm]"), "h is needed in meters, but the column h [mm] is in mm");
    EXPECT_EQ(Point("N_ft,E_ft,h"),
              "a coordinate is needed in meters, but the column N_ft is in ft");
    EXPECT_EQ(Point("N [deg],E [deg],h"),
              "a coordinate is needed in meters, but the column N [deg] is in deg");
    EXPECT_EQ(Point("N,E,h,h_mm"), "0 1 2") << "the right one is there";
    EXPECT_EQ(Point("N,E,z_mm",
                    {
                        {"h", "z_mm"}
    }),
              "h is needed in meters, but the column z_mm is in mm");
}

TEST(ColumnNames, AreChosenByTheUser)
{
    const ColumnChoice all = {
        {"N", "Hochwert"    },
        {"E", "Rechtswert"  },
        {"h", "Height (ell)"}
    };
    EXPECT_EQ(Point("Rechtswert,Hochwert,Height (ell),N,E,h", all), "1 0 2");
    EXPECT_EQ(Point("N,E,h,Z",
                    {
                        {"h", "Z"}
    }),
              "0 1 3");
    EXPECT_EQ(Point("a,b,h",
                    {
                        {"N", "a"},
                        {"E", "b"}
    }),
              "0 1 2");
    EXPECT_EQ(Point("a,b,h",
                    {
                        {"N", "a"}
    }),
              "--columns gives N without E");
    EXPECT_EQ(Point("a,b,h",
                    {
                        {"N", "a"},
                        {"E", "a"}
    }),
              "N and E are the same column a");
    EXPECT_EQ(Point("a,b,h",
                    {
                        {"N", "A"},
                        {"E", "b"}
    }),
              "missing in the header: A; it names a, b, h");
}

TEST(ColumnNames, OfOtherQuantitiesFollowTheSameRules)
{
    const ScratchFolder folder;
    const CsvReader rows(folder.Write("log.csv", "Tilt [deg],mag_x [uT],name [m],Pitch,dPitch\n"));
    const auto find = [&](const char* names, ColumnUnit unit) {
        return FindColumn(rows, {"key", unit, names, ""}, {});
    };
    EXPECT_EQ(find("incline tilt", ColumnUnit::Degrees), 0U);
    EXPECT_EQ(find("roll", ColumnUnit::Degrees), std::nullopt);
    EXPECT_THROW((void)find("mag_x", ColumnUnit::Counts), InputError);
    EXPECT_THROW((void)find("dpitch pitch", ColumnUnit::Degrees), InputError);
}

TEST(ColumnNames, TheUnitThatIsNeededIsNamed)
{
    const ScratchFolder folder;
    const CsvReader rows(folder.Write("log.csv", "a [ft]\n"));
    const auto complaintFor = [&rows](ColumnUnit unit) {
        try {
            (void)FindColumn(rows, {"key", unit, "a", ""}, {});
        } catch (const InputError& error) {
            const std::string text = error.what();
            return text.substr(text.find("key"));
        }
        return std::string();
    };
    const std::pair<ColumnUnit, const char*> units[] = {
        {ColumnUnit::Meters,           "meters"            },
        {ColumnUnit::Degrees,          "degrees"           },
        {ColumnUnit::Counts,           "counts"            },
        {ColumnUnit::Gravities,        "g"                 },
        {ColumnUnit::DegreesPerSecond, "degrees per second"},
        {ColumnUnit::None,             "no unit"           },
    };
    for (const auto& [unit, name] : units)
        EXPECT_EQ(complaintFor(unit),
                  std::string("key is needed in ") + name + ", but the column a [ft] is in ft");
}

TEST(ColumnNames, EveryPairOfPlaneCoordinatesIsFound)
{
    const ScratchFolder folder;
    const CsvReader rows(folder.Write(
        "tips.csv",
        "Time,antenna_N_m,antenna_E_m,antenna_h_m,tip_N_m,tip_E_m,error_N_m,error_E_m\n"));
    const auto pairs = FindPlanePairs(rows, {"x", "y", "antenna tip"}, {});
    ASSERT_EQ(pairs.size(), 2U);
    EXPECT_EQ(pairs[0].first, 1U);
    EXPECT_EQ(pairs[1].first, 4U);
    EXPECT_EQ(pairs[1].second, 5U);
    EXPECT_EQ(pairs[1].tag, "tip");
}

TEST(ColumnNames, AreReportedWhereTheyDifferFromTheKeys)
{
    const ScratchFolder folder;
    const CsvReader rows(folder.Write("points.csv", "Northing,E,h\n"));
    EXPECT_EQ(DescribeColumns(rows,
                              {
                                  {"N", 0},
                                  {"E", 1},
                                  {"h", 2}
    }),
              "N from Northing");
}

} // namespace
