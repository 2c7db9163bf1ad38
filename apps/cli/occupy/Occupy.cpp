// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/Occupy.h"

#include "apps/cli/ColumnsOption.h"
#include "apps/cli/ExitCode.h"
#include "apps/cli/JsonOutput.h"
#include "apps/cli/OptionChecks.h"
#include "apps/cli/ParameterCheck.h"
#include "apps/cli/SensorOptions.h"
#include "apps/cli/occupy/FieldOfLog.h"
#include "apps/cli/occupy/OccupationLog.h"
#include "apps/cli/occupy/OccupyPicture.h"
#include "apps/cli/occupy/OccupyReport.h"
#include "apps/cli/occupy/SpotSetup.h"
#include "apps/cli/occupy/TrueTips.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Messages.h"
#include "apps/tables/Numbers.h"
#include "apps/tables/Output.h"
#include <algorithm>
#include <fmt/format.h>
#include <memory>

namespace cli {

namespace {

struct OccupyOptions
{
    OccupySetup setup;
    tables::ColumnChoice columns;
    bool partialConfig = false;
    bool noMagnetometer = false;
    std::optional<double> bias;
    std::string antennaErrors; // PLAN,HEIGHT
    std::string field;         // STRENGTH,DIP
    std::string out;
    std::string plot;
    bool json = false;
};

constexpr const char* kFooter = R"(
Plant the tip, then lean the pole in or rock it, for 5 to 10 s. The antenna's track shows where
the pole leans to, the gyros how it turned in between, the accelerometers where the vertical is;
the magnetometer is a witness of the heading and no more. With --field or --calibration it is not
heard where the field is disturbed, and that is reported.

What is stored is right if the sensor is parallel to the pole to --axis-sd, the accelerometers
are good to --accelerometer-sd, the pole's length to --pole-sd and the antenna to --antenna-sd:
no track shows these. Check the first two by a pole held plumb and turned about its axis: pitch
and roll must stay. All points of a log have the same sensors: where sensors and antenna
contradict each other at a quarter of the points, none is stored.

The log is a text file with a header that names the columns and one row per sample:
  point                            name of the point; without the column the points are told
                                   apart by motion
  seconds                          time of the row, of any origin
  dGyro_x, dGyro_y, dGyro_z        rates [degrees/s]; not needed with --gyro-free
  dAcc_x, dAcc_y, dAcc_z           specific force [g]; likewise
  dPitch, dRoll                    inclination of the pole [degrees]
  dMag_x, dMag_y, dMag_z           magnetometer A [counts]; not needed with --no-magnetometer,
  dMag_x_2, dMag_y_2, dMag_z_2     and magnetometer B likewise
  N, E, h or x, y, h               antenna: N (x), E (y) and height [m]; all three blank on rows
                                   without an epoch. A position that is held over on the rows
                                   after it is an epoch on the first of them only
Names may be spelt as in Northing [m] or acc_x; --columns names others. Rows that follow each
other with the same point are one occupation, rows without a name belong to none. Each
occupation has a tip of its own. Without the column `point` an occupation lasts while the antenna
moves as the turns of the pole about one tip let it; stops of less than 2 s are left out, and so
is the second after a walk and the one before it. Fields are separated by , ; or TAB.

The advice for a point is to store the tip, to move the pole on, as the reason says, or to
refuse the occupation. A refused point has no tip in the table, and in JSON beside its advice only.

Examples:
  tiltpole occupy log.csv --pole 2.0
  tiltpole occupy log.csv --pole 2.0 --bias 0.75 --truth tips.csv --out found.csv
  tiltpole occupy log.csv --pole 2.0 --json | jq '.points[] | {point, advice, tip_m}'

Exit codes: 0 done, 1 an occupation was refused or there is none, 2 wrong use or unreadable
input. Where every occupation is refused, --out and --plot are not written.)";

void LoadSpotCalibration(OccupySetup& setup)
{
    setup.spot = ReadSpotSidecar(setup.calibration);
    if (setup.spot.sensorType != setup.occupation.sensorType)
        throw tables::InputError(setup.calibration,
                                 fmt::format("is of a sensor of type {}, but this one has type {}",
                                             setup.spot.sensorType, setup.occupation.sensorType));
    UseSpotCalibration(setup);
}

// Whether the field is no longer that of the calibration: it is then told.
bool HasOtherField(const OccupyResult& result)
{
    const OccupySetup& setup = result.setup;
    const field::SpotMagnetometer& calibrated = setup.spot.result.a;
    const bool asked = setup.occupation.useMagnetometer && calibrated.found && result.field;
    const std::string change = asked ? ChangeOf(*result.field, calibrated) : std::string();
    if (change.empty()) return false;
    tables::Tell("{}: {} cannot be used: {}; calibrate anew, or use --no-magnetometer\n", setup.log,
                 setup.calibration, change);
    return true;
}

void LoadCalibration(const OccupyOptions& options, OccupySetup& setup)
{
    CInclineSensor_Position& position = setup.position;
    position.SetSensorType(setup.occupation.sensorType);
    if (!setup.calibration.empty()) LoadSpotCalibration(setup);
    if (!setup.config.empty()) LoadParameters(setup.config, position, options.partialConfig);
    if (options.bias) position.SetMagneticBiasAngle_A(*options.bias);
    setup.occupation.magneticBias = position.GetMagneticBiasAngle_A();
}

OccupySetup SetupOf(const OccupyOptions& options)
{
    OccupySetup setup = options.setup;
    setup.occupation.useMagnetometer = !options.noMagnetometer;
    LoadCalibration(options, setup);
    if (const auto errors = tables::ParseNumbers(options.antennaErrors, 2)) {
        setup.occupation.planSigma = (*errors)[0];
        setup.occupation.heightSigma = (*errors)[1];
    }
    if (const auto shape = tables::ParseNumbers(options.field, 2))
        setup.field = {(*shape)[0], (*shape)[1]};
    if (options.noMagnetometer) setup.field.reset();
    return setup;
}

void WriteFiles(const OccupyOptions& options, const OccupyResult& result)
{
    tables::OutputFiles files;
    if (!options.plot.empty()) SaveOccupyPicture(files, options.plot, result);
    if (!options.out.empty()) files.Write(options.out, OccupyTable(result));
    files.Finish();
}

int Run(const OccupyOptions& options)
{
    const std::string& log = options.setup.log;
    tables::KeepApart({"-", options.out, options.plot},
                      {log, options.setup.config, options.setup.calibration, options.setup.truth});
    OccupyResult result = EstimatePoints(SetupOf(options), options.columns);
    if (HasOtherField(result)) return kNegative;
    if (!result.setup.truth.empty()) CompareWithTruth(result);
    const auto refused = [](const OccupiedPoint& point) { return point.IsRefused(); };
    const bool allRefused = std::all_of(result.points.begin(), result.points.end(), refused);
    if (!allRefused) WriteFiles(options, result);
    if (options.json) {
        PrintJson(OccupyJson(result));
    } else if (!allRefused) {
        tables::WriteFile("-", OccupyText(result));
    }
    if (result.points.empty())
        tables::Tell("{}: there is no occupied point{}\n", log,
                     result.trouble ? ": " + *result.trouble : "");
    if (options.json || allRefused) tables::TellText(RefusalText(result));
    const bool anyRefused = std::any_of(result.points.begin(), result.points.end(), refused);
    return result.points.empty() || anyRefused ? kNegative : kDone;
}

CLI::Validator PlanAndHeight()
{
    const auto problemOf = [](const std::string& text) -> std::string {
        const auto errors = tables::ParseNumbers(text, 2);
        if (!errors) return "'" + text + "' is not PLAN,HEIGHT";
        const std::string plan = tables::OutsideOf(tables::kDeviation, (*errors)[0]);
        if (!plan.empty()) return "PLAN " + plan;
        const std::string height = tables::OutsideOf(tables::kDeviation, (*errors)[1]);
        return height.empty() ? height : "HEIGHT " + height;
    };
    return {problemOf, "", "PLAN,HEIGHT"};
}

void AddInputOptions(CLI::App& command, OccupyOptions& options)
{
    field::OccupationSetup& setup = options.setup.occupation;
    command.add_option("LOG", options.setup.log, "Log of occupied points; - is standard input")
        ->required()
        ->type_name("FILE");
    AddColumnsOption(command, options.columns, {"N", "E", "h"}, OccupationKeys());
    command.add_option("--pole", setup.poleLength, "Pole length, antenna to tip [m]")
        ->required()
        ->type_name("LENGTH")
        ->check(NumberIn(tables::kPoleLength));
    CLI::Option* const calibration =
        command
            .add_option(
                "--calibration", options.setup.calibration,
                "What `tiltpole calibrate --on-the-spot` found of this pole (pole.cfg.spot.json): "
                "magnetometers, axis, accelerometers and gyros; instead of --config")
            ->type_name("FILE");
    AddConfigOptions(command, options.setup.config, options.partialConfig)->excludes(calibration);
    AddSensorTypeOption(command, setup.sensorType);
    AddBiasOption(command, options.bias);
}

void AddModelOptions(CLI::App& command, OccupyOptions& options)
{
    field::OccupationSetup& setup = options.setup.occupation;
    CLI::Option* const withoutMagnetometer =
        command.add_flag("--no-magnetometer", options.noMagnetometer,
                         "Take nothing from the magnetometer; what it says is still compared");
    AddFieldOption(command, options.field,
                   "samples whose field differs have no vote on the heading, and are reported; "
                   "with --calibration its own by default")
        ->excludes(withoutMagnetometer);
    CLI::Option* const delay =
        command
            .add_option("--delay", options.setup.delay,
                        "Delay of the antenna behind the sensors [s], if known; what remains is "
                        "found out")
            ->type_name("SECONDS")
            ->check(NumberIn(tables::kDelay));
    command
        .add_flag("--gyro-free", options.setup.gyroFree,
                  "For sensors without gyros: by pitch, roll and the antenna's track; the pole has "
                  "to be led slowly from one lean to the opposite one and held at both")
        ->excludes(withoutMagnetometer)
        ->excludes(delay);
    command
        .add_option("--sensor-height", setup.sensorHeight,
                    "Height of the sensor above the tip, along the pole [m], for taking its own "
                    "motion off where the accelerations fit a planted pole; found out by default")
        ->type_name("LENGTH")
        ->check(NumberIn(tables::kPoleLength));
    command
        .add_option("--pole-sd", setup.poleSigma,
                    "Standard deviation of the pole's length [m]; default 0.002")
        ->type_name("LENGTH")
        ->check(NumberIn(tables::kDeviationOrZero));
    command
        .add_option("--axis-sd", setup.axisSigma,
                    "Standard deviation of the pole's axis in the sensor, about x and y each "
                    "[degrees]; default 0.15")
        ->type_name("ANGLE")
        ->check(NumberIn(tables::kAngleDeviation));
    command
        .add_option("--accelerometer-sd", setup.accelerometerSigma,
                    "Standard deviation of the vertical by the accelerometers of a sensor at rest "
                    "[degrees]; default 0.15")
        ->type_name("ANGLE")
        ->check(NumberIn(tables::kAngleDeviation));
    command
        .add_option("--tilt-sd", setup.tiltSigma,
                    "Standard deviation of constant errors of dPitch and dRoll against the pole "
                    "[degrees], for --gyro-free; default 0.5")
        ->type_name("ANGLE")
        ->check(NumberIn(tables::kAngleDeviation));
    command
        .add_option("--antenna-sd", options.antennaErrors,
                    "Standard deviation of an antenna position, of N and E each and of h [m]; "
                    "default 0.004,0.011")
        ->type_name("PLAN,HEIGHT")
        ->check(PlanAndHeight());
}

void AddOutputOptions(CLI::App& command, OccupyOptions& options)
{
    command
        .add_option("--truth", options.setup.truth,
                    "Table of the true tips, point,N,E,h; adds the errors of the tips")
        ->type_name("FILE");
    command
        .add_option("--out", options.out, "Output file of one row a point, replaced when complete")
        ->type_name("FILE");
    command
        .add_option("--plot", options.plot,
                    "Plot of tracks, tips of single samples and tips with their ellipses, .png or "
                    ".svg")
        ->type_name("FILE")
        ->check(PictureName());
    command.add_flag("--json", options.json, "Print the results as JSON");
}

} // namespace

void AddOccupyCommand(CLI::App& program, int& exitCode)
{
    const auto options = std::make_shared<OccupyOptions>();
    CLI::App* const command = program.add_subcommand(
        "occupy", "Compute the tip of each occupied point from antenna track and gyros.");
    command->footer(kFooter);
    AddInputOptions(*command, *options);
    AddModelOptions(*command, *options);
    AddOutputOptions(*command, *options);
    command->callback([options, &exitCode] { exitCode = Run(*options); });
}

} // namespace cli
