// SPDX-License-Identifier: MIT
//
// tiltpole job: lists and exports what the store holds.
#include "apps/cli/job/JobPoints.h"
#include "apps/cli/job/Projection.h"
#include "tests/apps/RunLine.h"
#include "tests/apps/ScratchFile.h"
#include "tests/field/job/JobRows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <tuple>

namespace apps::test {
namespace {

using field::test::NewJob;
using field::test::SomeEpochs;
using field::test::SomePoint;
using testing::HasSubstr;
using testing::Not;

// P1 is replaced by P1~2, P2 is void, P3 has hardly any figures.
std::string SomeJob(const ScratchFolder& folder)
{
    const std::string path = folder.Path("site.gpkg");
    field::JobStore job = NewJob(path);
    field::JobPoint point = SomePoint("P1", 1);
    EXPECT_TRUE(job.AddPoint(point, SomeEpochs()));
    point.name = "P2";
    EXPECT_TRUE(job.AddPoint(point, {}));
    EXPECT_TRUE(job.VoidPoint(2, "wrong mark"));
    point.name = "P1~2";
    point.tip = {47.5660569, 19.0083602, 230.6054};
    point.receivedHeight = 191.1764;
    point.replaces = 1;
    EXPECT_TRUE(job.AddPoint(point, SomeEpochs()));
    field::JobPoint bare;
    bare.name = "P3";
    bare.setup = 1;
    bare.tip = {47.5661, 19.0084, 231.0};
    EXPECT_TRUE(job.AddPoint(bare, {}));
    EXPECT_TRUE(job.AddEvent({0, field::test::kNoon, "base", "station 0207 became 0208"}));
    return path;
}

TEST(Job, ListsPointsWithTheirStateAndEvents)
{
    const ScratchFolder folder;
    const LineOutcome outcome = RunLine("job list " + SomeJob(folder));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("points                  2 current, 1 replaced, 1 void"));
    EXPECT_THAT(outcome.output,
                HasSubstr("setup 1                 pole 2.0000 + 0.1165 m, sensor type 1, delay "
                          "124 ms, heading sd 1.2 degrees, calibration of 23 bytes, north by "
                          "WMM2025"));
    EXPECT_THAT(outcome.output, HasSubstr("P1    2026-11-22T12:00:58   47.56605670   19.00835993  "
                                          " 230.805    12    9   15  12.3   9  4   1  KERB  "
                                          "(replaced)\n"));
    EXPECT_THAT(outcome.output, HasSubstr("KERB  (void: wrong mark)\n"));
    EXPECT_THAT(outcome.output, HasSubstr("2026-11-22T12:00:00  base: station 0207 became 0208\n"));
    EXPECT_THAT(outcome.output, Not(HasSubstr("nan")));
}

TEST(Job, ListsEverythingAsJson)
{
    const ScratchFolder folder;
    const LineOutcome outcome = RunLine("job list --json " + SomeJob(folder));
    EXPECT_EQ(outcome.exitCode, 0);
    const auto json = nlohmann::json::parse(outcome.output);
    EXPECT_EQ(json["format"], "tiltpole job list");
    ASSERT_EQ(json["points"].size(), 4U);
    const auto& first = json["points"][0];
    EXPECT_EQ(first["state"], "replaced");
    EXPECT_EQ(first["tip"]["latitude_deg"], 47.56605670);
    EXPECT_NEAR(first["sd_n_m"].get<double>(), 0.0125, 1e-12);
    EXPECT_EQ(first["method"], "mean");
    EXPECT_EQ(json["points"][1]["void_reason"], "wrong mark");
    EXPECT_EQ(json["points"][2]["name"], "P1");
    EXPECT_EQ(json["points"][2]["row_name"], "P1~2");
    EXPECT_TRUE(json["points"][3]["sd_h_m"].is_null());
    EXPECT_EQ(json["setups"][0]["delay_s"], 0.124);
    EXPECT_EQ(json["events"][0]["text"], "station 0207 became 0208");
}

TEST(Job, ListsAnEmptyJobInTwoLinesAndItsSetups)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("site.gpkg");
    field::test::OpenForWriting(path);
    const LineOutcome outcome = RunLine("job list " + path);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "job                     " + path
                                  + "\npoints                  0 current, 0 replaced, 0 void\n");
}

TEST(Job, ListsASetupThatNothingIsKnownOf)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("site.gpkg");
    ASSERT_TRUE(field::test::OpenForWriting(path).AddSetup({}));
    EXPECT_THAT(RunLine("job list " + path).output,
                HasSubstr("pole - + - m, sensor type 1, delay - ms, heading sd - degrees, no "
                          "calibration, north by the calibration\n"));
}

TEST(Job, ListsHowAPointCameAboutBehindItsCode)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("site.gpkg");
    {
        field::JobStore job = NewJob(path);
        field::JobPoint point = SomePoint("F1", 1);
        point.forced = true;
        ASSERT_TRUE(job.AddPoint(point, {}));
        point = SomePoint("O1", 1);
        point.byOccupation = true;
        point.code.clear();
        ASSERT_TRUE(job.AddPoint(point, {}));
        ASSERT_TRUE(job.AddPoint(SomePoint("M1", 1), {}));
    }
    const std::string list = RunLine("job list " + path).output;
    EXPECT_THAT(list, HasSubstr("  9  4   1  KERB  (forced)\n"));
    EXPECT_THAT(list, HasSubstr("  9  4   1  (occupation)\n"));
    EXPECT_THAT(list, HasSubstr("  9  4   1  KERB\n"));
    const LineOutcome csv = RunLine("job export " + path + " --format csv --height received");
    EXPECT_THAT(csv.output, testing::ContainsRegex("\nF1,[^\n]*,store,1,1\n"));
    EXPECT_THAT(csv.output, testing::ContainsRegex("\nM1,[^\n]*,store,0,1\n"));
}

TEST(Job, ExportsANoteOfSeveralLinesInOneAndNoNegativeZero)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("site.gpkg");
    {
        field::JobStore job = NewJob(path);
        field::JobPoint point = SomePoint("P1", 1);
        point.note = "north\nside\tof 3";
        point.receivedHeight = -0.00004;
        point.geoid = 0.00004;
        ASSERT_TRUE(job.AddPoint(point, {}));
        point.name = "P2";
        point.receivedHeight = -0.00006;
        ASSERT_TRUE(job.AddPoint(point, {}));
    }
    const std::string csv =
        RunLine("job export " + path + " --format csv --height received").output;
    EXPECT_THAT(csv, HasSubstr(",0.0000,received,0.0000,KERB,north side of 3,2026"));
    EXPECT_THAT(csv, HasSubstr(",-0.0001,received,0.0000,"));
}

TEST(Job, ExportsNoPointWithoutAPlace)
{
    const ScratchFolder folder;
    const std::string job = SomeJob(folder);
    ASSERT_EQ(field::test::PlainLook(job).Ask("UPDATE point SET geom = x'00' WHERE name = 'P3'"),
              "");
    const std::string out = folder.Path("out");
    const LineOutcome outcome = RunLine("job export " + job + " --format geojson --out " + out);
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.output, job + ": point P3 has no geometry of a point with a height\n");
    EXPECT_FALSE(std::filesystem::exists(out));
}

// As another program may leave it: the store writes a row after the one that it replaces.
TEST(Job, ARowThatReplacesALaterOneKeepsItsName)
{
    const ScratchFolder folder;
    const std::string job = SomeJob(folder);
    ASSERT_EQ(field::test::PlainLook(job).Ask("UPDATE point SET replaces = NULL WHERE id = 3;"
                                              "UPDATE point SET replaces = 4 WHERE id = 1"),
              "");
    const auto points = nlohmann::json::parse(RunLine("job list --json " + job).output)["points"];
    EXPECT_EQ(points[0]["name"], "P1");
    EXPECT_EQ(points[0]["state"], "current");
    EXPECT_EQ(points[2]["name"], "P1~2");
    EXPECT_EQ(points[3]["state"], "replaced");
}

TEST(Job, ExportsWhatCountsUnderTheNameOfTheFirstRow)
{
    const ScratchFolder folder;
    const std::string out = folder.Path("out.csv");
    const LineOutcome outcome =
        RunLine("job export " + SomeJob(folder) + " --format csv --height received --out " + out);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_EQ(ReadAll(out),
              "name,latitude_deg,longitude_deg,h_m,height,geoid_m,code,note,utc,sd_N_m,sd_E_m,"
              "sd_h_m,epochs,left_out,tilt_deg,azimuth_true_deg,quality,station,age_s,gate,forced,"
              "setup\n"
              "P1,47.5660569000,19.0083602000,191.1764,received,39.4290,KERB,\"north side, "
              "Möbelhaus\",2026-11-22T12:00:58.200Z,0.0125,0.0094,0.0150,9,1,12.34,250.10,4,0207,"
              "1.0,store,0,1\n"
              "P3,47.5661000000,19.0084000000,,received,,,,1970-01-01T00:00:00.000Z,,,,0,0,,,0,,,"
              ",0,1\n");
    EXPECT_THAT(outcome.output, HasSubstr("above the geoid of the receiver"));
}

// Transverse Mercator on WGS 84, zone 34 N, by the series of Krüger to third order in n: an
// independent formula, good to 0.1 mm within the zone.
std::pair<double, double> Utm34(double latitude, double longitude)
{
    const double pi = 3.14159265358979323846;
    const double f = 1.0 / 298.257223563;
    const double n = f / (2.0 - f);
    const double phi = latitude * pi / 180.0;
    const double lambda = (longitude - 21.0) * pi / 180.0;
    const double k = 2.0 * std::sqrt(n) / (1.0 + n);
    const double t = std::sinh(std::atanh(std::sin(phi)) - k * std::atanh(k * std::sin(phi)));
    const double xi = std::atan2(t, std::cos(lambda));
    const double eta = std::atanh(std::sin(lambda) / std::sqrt(1.0 + t * t));
    const double a[] = {n / 2 - 2 * n * n / 3 + 5 * n * n * n / 16,
                        13 * n * n / 48 - 3 * n * n * n / 5, 61 * n * n * n / 240};
    const double radius = 6378137.0 / (1.0 + n) * (1.0 + n * n / 4 + n * n * n * n / 64);
    double east = eta;
    double north = xi;
    for (int j = 1; j <= 3; ++j) {
        east += a[j - 1] * std::cos(2 * j * xi) * std::sinh(2 * j * eta);
        north += a[j - 1] * std::sin(2 * j * xi) * std::cosh(2 * j * eta);
    }
    return {0.9996 * radius * north, 500000.0 + 0.9996 * radius * east};
}

std::vector<std::string> FieldsOf(const std::string& line)
{
    std::vector<std::string> fields;
    std::istringstream text(line);
    for (std::string part; std::getline(text, part, ',');)
        fields.push_back(part);
    return fields;
}

TEST(Job, WritesNorthingAndEastingOfAProjectedSystem)
{
    const ScratchFolder folder;
    const std::string job = SomeJob(folder);
    const std::string out = folder.Path("out.txt");
    const auto [north, east] = Utm34(47.5660569, 19.0083602);
    for (const bool northFirst : {true, false}) {
        const LineOutcome outcome =
            RunLine("job export " + job + " --crs EPSG:32634 --height ellipsoidal --format "
                    + (northFirst ? "pnezd" : "penzd") + " --out " + out);
        ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
        EXPECT_THAT(outcome.output, HasSubstr("EPSG:32634, WGS 84 / UTM zone 34N"));
        std::istringstream lines(ReadAll(out));
        std::string line;
        ASSERT_TRUE(std::getline(lines, line));
        const std::vector<std::string> fields = FieldsOf(line);
        ASSERT_EQ(fields.size(), 5u) << line;
        EXPECT_EQ(fields[0], "P1");
        EXPECT_NEAR(std::stod(fields[northFirst ? 1 : 2]), north, 0.0002);
        EXPECT_NEAR(std::stod(fields[northFirst ? 2 : 1]), east, 0.0002);
        EXPECT_EQ(fields[3], "230.6054");
        EXPECT_EQ(fields[4], "KERB");
        ASSERT_TRUE(std::getline(lines, line));
        EXPECT_EQ(line.back(), ',') << "P3 has no code";
    }
}

// Sweden's system states northing first; the export does not depend on the order.
TEST(Job, DoesNotDependOnTheOrderThatASystemStates)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("site.gpkg");
    field::JobStore job = NewJob(path);
    field::JobPoint point = SomePoint("S1", 1);
    point.tip = {59.3293, 18.0686, 30.0};
    ASSERT_TRUE(job.AddPoint(point, {}));
    const LineOutcome outcome =
        RunLine("job export " + path + " --crs EPSG:3006 --height ellipsoidal --format pnezd");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
    const std::vector<std::string> fields = FieldsOf(outcome.output);
    EXPECT_GT(std::stod(fields[1]), 6.5e6);
    EXPECT_LT(std::stod(fields[2]), 7.0e5);
}

TEST(Job, WritesGeoJsonInDegreesAboveTheEllipsoid)
{
    const ScratchFolder folder;
    const std::string out = folder.Path("out.geojson");
    const LineOutcome outcome =
        RunLine("job export " + SomeJob(folder) + " --format geojson --out " + out);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
    const auto json = nlohmann::json::parse(ReadAll(out));
    EXPECT_EQ(json["type"], "FeatureCollection");
    ASSERT_EQ(json["features"].size(), 2u);
    EXPECT_EQ(json["features"][0]["geometry"]["coordinates"],
              (nlohmann::json{19.0083602, 47.5660569, 230.6054}));
    EXPECT_EQ(json["features"][0]["properties"]["name"], "P1");
    EXPECT_EQ(json["features"][0]["properties"]["h_received_m"], 191.1764);
    EXPECT_TRUE(json["features"][1]["properties"]["h_received_m"].is_null());
    EXPECT_TRUE(json["features"][1]["properties"]["code"].is_null());
}

using Mistake = std::tuple<const char*, const char*>;

class JobMistakes : public testing::TestWithParam<Mistake>
{};

TEST_P(JobMistakes, AreNamedAndWriteNothing)
{
    const ScratchFolder folder;
    const std::string job = SomeJob(folder);
    const auto& [options, sentence] = GetParam();
    const std::string out = folder.Path("out");
    const LineOutcome outcome = RunLine("job export " + job + " --out " + out + " " + options);
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output, HasSubstr(sentence));
    EXPECT_FALSE(std::filesystem::exists(out));
}

INSTANTIATE_TEST_SUITE_P(
    Exports, JobMistakes,
    testing::Values(
        Mistake{"--format csv", "--height is needed: ellipsoidal or received"},
        Mistake{"--format pnezd --height received", "--crs is needed for northing and easting"},
        Mistake{"--format geojson --crs EPSG:32634", "GeoJSON is in WGS 84: leave --crs out"},
        Mistake{"--format geojson --height received", "heights of GeoJSON are above the ellipsoid"},
        Mistake{"--format dxf --height received", "--format"},
        Mistake{"--format csv --height high", "--height"},
        Mistake{"--format csv --height received --crs EPSG:999999",
                "EPSG:999999: is not a coordinate reference system that PROJ knows"},
        Mistake{"--format csv --height received --crs EPSG:16034", // a conversion, zone 34 N
                "EPSG:16034: is not a coordinate reference system that PROJ knows"},
        Mistake{"--format csv --height received --crs EPSG:4258",
                "EPSG:4258: is not a projected system"},
        Mistake{"--format csv --height received --crs EPSG:4978",
                "EPSG:4978: is not a projected system"},
        Mistake{"--format csv --height received --crs EPSG:2263",
                "EPSG:2263: is in the unit US survey foot, not in meters"},
        Mistake{"--format csv --height received --crs EPSG:5513",
                "EPSG:5513: has axes that do not point north and east"},
        Mistake{"--format csv --height received --crs EPSG:5041",
                "EPSG:5041: has axes that do not point north and east"}));

TEST(Job, RefusesToWriteOverTheJobAndToReadAnotherFile)
{
    const ScratchFolder folder;
    const std::string job = SomeJob(folder);
    const LineOutcome over = RunLine("job export " + job + " --format geojson --out " + job);
    EXPECT_EQ(over.exitCode, 2);
    EXPECT_THAT(over.output, HasSubstr("is an input of this command"));

    const std::string text = folder.Write("notes.txt", "no job at all\n");
    const LineOutcome other = RunLine("job list " + text);
    EXPECT_EQ(other.exitCode, 2);
    EXPECT_EQ(other.output, text + ": the file is not a job: it is no GeoPackage\n");
}

TEST(Job, IsNotLookedForInAFolder)
{
    const ScratchFolder folder;
    const LineOutcome outcome = RunLine("job list " + folder.Path(""));
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.output, folder.Path("") + ": is a folder, not a job\n");
}

TEST(Job, HasNothingToExportWithoutPoints)
{
    const ScratchFolder folder;
    NewJob(folder.Path("site.gpkg"));
    const LineOutcome outcome = RunLine("job export " + folder.Path("site.gpkg")
                                        + " --format geojson --out " + folder.Path("out"));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("there is no point to export"));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("out")));
}

TEST(Job, NamesPointsOutsideTheAreaOfTheSystem)
{
    const ScratchFolder folder;
    const LineOutcome outcome = RunLine("job export " + SomeJob(folder)
                                        + " --crs EPSG:32601 --height received --format pnezd");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("outside its area        P1, P3"));
}

// A system of the plane about 47 N 19 E, with axes and a usage of its own.
std::string PlaneSystem(const std::string& axes, const std::string& usage = "")
{
    return R"(PROJCRS["site",BASEGEOGCRS["WGS 84",DATUM["World Geodetic System 1984",)"
           R"(ELLIPSOID["WGS 84",6378137,298.257223563]]],CONVERSION["site",)"
           R"(METHOD["Transverse Mercator"],PARAMETER["Latitude of natural origin",47],)"
           R"(PARAMETER["Longitude of natural origin",19],)"
           R"(PARAMETER["Scale factor at natural origin",1],PARAMETER["False easting",0],)"
           R"(PARAMETER["False northing",0]],)"
           + axes + R"(,LENGTHUNIT["metre",1])" + usage + "]";
}

const std::string kNorthAndEast =
    R"(CS[Cartesian,2],AXIS["N",north,ORDER[1]],AXIS["E",east,ORDER[2]])";

std::string RefusalOf(const std::string& system)
{
    try {
        const cli::Projection projection(system);
    } catch (const tables::InputError& error) {
        return error.what();
    }
    return "none";
}

TEST(JobProjection, NeedsTwoAxesOneToTheNorthAndOneToTheEast)
{
    EXPECT_EQ(RefusalOf(PlaneSystem(kNorthAndEast)), "none");
    EXPECT_THAT(RefusalOf(PlaneSystem(R"(CS[Cartesian,3],AXIS["N",north,ORDER[1]],)"
                                      R"(AXIS["E",east,ORDER[2]],AXIS["h",up,ORDER[3]])")),
                HasSubstr(": has not two axes; choose a system of the plane"));
    EXPECT_THAT(RefusalOf(PlaneSystem(
                    R"(CS[Cartesian,2],AXIS["N",north,ORDER[1]],AXIS["W",west,ORDER[2]])")),
                HasSubstr(": has axes that do not point north and east"));
}

TEST(JobProjection, NeedsASystemAndNoOperation)
{
    const std::string operation = "+proj=utm +zone=34 +ellps=WGS84";
    EXPECT_EQ(RefusalOf(operation),
              operation + ": is not a coordinate reference system that PROJ knows");
    EXPECT_EQ(RefusalOf(operation + " +type=crs"), "none");
}

TEST(JobProjection, OfAnotherBodyIsNotReached)
{
    const std::string moon = "+proj=eqc +R=1737400 +units=m +type=crs";
    EXPECT_EQ(RefusalOf(moon), moon + ": cannot be reached from WGS 84");
}

TEST(JobProjection, HasNoPlaceForAPointThatHasNone)
{
    cli::Projection zone("EPSG:32634");
    const double none = std::nan("");
    for (const field::Geodetic& point : {
             field::Geodetic{none, 19.0, 200.0},
             {47.0, none, 200.0}
    })
        EXPECT_THROW(zone.Place(point, "P1"), tables::InputError);
}

TEST(JobProjection, SaysWhatProjDidAndHowWell)
{
    cli::Projection zone("EPSG:32634");
    zone.Place({47.0, 19.0, 200.0}, "P1");
    EXPECT_THAT(zone.Operation(), testing::EndsWith(", accuracy 0 m"));
    // Of Hungary, with several ways there; which of them is taken depends on the place.
    cli::Projection hungary("EPSG:23700");
    EXPECT_THAT(hungary.Operation(), testing::EndsWith(", accuracy not known"));
    hungary.Place({47.0, 19.0, 200.0}, "P1");
    EXPECT_THAT(hungary.Operation(), testing::ContainsRegex(", accuracy [0-9.]+ m$"));
}

TEST(JobProjection, OfAnAreaWithoutBordersIsMeantForEveryPoint)
{
    const cli::Projection site(
        PlaneSystem(kNorthAndEast, R"(,USAGE[SCOPE["survey"],AREA["a site"]])"));
    EXPECT_TRUE(site.IsMeantFor({-47.0, -161.0, 0.0}));
}

TEST(JobProjection, IsMeantForTheBordersOfItsAreaToo)
{
    const cli::Projection zone("EPSG:32634"); // 18 to 24 degrees east, 0 to 84 north
    for (const field::Geodetic& corner : {
             field::Geodetic{0.0,  18.0, 0.0},
             {84.0, 24.0, 0.0}
    })
        EXPECT_TRUE(zone.IsMeantFor(corner)) << corner.latitude;
    for (const field::Geodetic& outside : {
             field::Geodetic{-0.1, 20.0, 0.0},
             {84.1, 20.0, 0.0},
             {45.0, 17.9, 0.0},
             {45.0, 24.1, 0.0}
    })
        EXPECT_FALSE(zone.IsMeantFor(outside)) << outside.latitude << ' ' << outside.longitude;
}

TEST(JobProjection, IsMeantForBothSidesOfTheDateLine)
{
    const cli::Projection fiji("EPSG:3460"); // 176.81 degrees east to 178.15 west
    EXPECT_TRUE(fiji.IsMeantFor({-18.0, 178.0, 0.0}));
    EXPECT_TRUE(fiji.IsMeantFor({-18.0, -179.0, 0.0}));
    EXPECT_FALSE(fiji.IsMeantFor({-18.0, 170.0, 0.0}));
    EXPECT_FALSE(fiji.IsMeantFor({-18.0, -170.0, 0.0}));
    EXPECT_FALSE(fiji.IsMeantFor({18.0, 178.0, 0.0}));
}

TEST(JobProjection, OfASystemWithoutAnAreaIsMeantForEveryPoint)
{
    cli::Projection half("+proj=ortho +lat_0=47 +lon_0=19 +ellps=WGS84 +units=m +type=crs");
    EXPECT_TRUE(half.IsMeantFor({-47.0, -161.0, 0.0}));
    EXPECT_NEAR(half.Place({47.0, 19.0, 0.0}, "P1").north, 0.0, 1e-6);
    try {
        half.Place({-47.0, -161.0, 0.0}, "P7"); // on the half of the globe that it does not show
        FAIL() << "a place was made up";
    } catch (const std::exception& error) {
        EXPECT_THAT(error.what(), HasSubstr("has no place for point P7"));
    }
}

TEST(Job, WritesATableInAProjectedSystem)
{
    const ScratchFolder folder;
    const std::string out = folder.Path("out.csv");
    const LineOutcome outcome =
        RunLine("job export " + SomeJob(folder)
                + " --crs EPSG:32634 --height ellipsoidal --format csv --out " + out);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
    std::istringstream lines(ReadAll(out));
    std::string line;
    ASSERT_TRUE(std::getline(lines, line));
    EXPECT_TRUE(line.starts_with("name,N_m,E_m,h_m,height,")) << line;
    ASSERT_TRUE(std::getline(lines, line));
    const auto [north, east] = Utm34(47.5660569, 19.0083602);
    const std::vector<std::string> fields = FieldsOf(line);
    EXPECT_EQ(fields[0], "P1");
    EXPECT_NEAR(std::stod(fields[1]), north, 0.0002);
    EXPECT_NEAR(std::stod(fields[2]), east, 0.0002);
    EXPECT_EQ(fields[3], "230.6054");
    EXPECT_EQ(fields[4], "ellipsoidal");
}

TEST(JobPoints, AreChosenByNamesAndRanges)
{
    EXPECT_TRUE(cli::Chooses("12-40", "12"));
    EXPECT_TRUE(cli::Chooses("12-40", "40"));
    EXPECT_TRUE(cli::Chooses("12-40", "0020"));
    EXPECT_FALSE(cli::Chooses("12-40", "41"));
    EXPECT_FALSE(cli::Chooses("12-40", "P20"));
    EXPECT_TRUE(cli::Chooses("P12-P40", "P20"));
    EXPECT_TRUE(cli::Chooses("P12-40", "P20"));
    EXPECT_FALSE(cli::Chooses("P12-P40", "Q20"));
    EXPECT_TRUE(cli::Chooses("P3, P7-P9", "P8"));
    EXPECT_TRUE(cli::Chooses("A-1-A-3", "A-2"));
    EXPECT_TRUE(cli::Chooses("A-2", "A-2"));
    EXPECT_TRUE(cli::Chooses("all", "anything"));
    EXPECT_FALSE(cli::Chooses("12-40", "KERB")) << "a name without a number";
    EXPECT_FALSE(cli::Chooses("12-KERB", "20")) << "not a range";
    EXPECT_FALSE(cli::Chooses("P12-Q40", "P20")) << "other letters";
    EXPECT_FALSE(cli::Chooses("1-99999999999999999999", "20")) << "too many digits";
    EXPECT_FALSE(cli::Chooses("", "P1"));
    EXPECT_THROW(cli::Chooses("40-12", "20"), tables::InputError);
}

} // namespace
} // namespace apps::test
