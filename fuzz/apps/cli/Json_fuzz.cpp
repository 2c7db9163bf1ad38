// SPDX-License-Identifier: MIT
//
// The JSON files that commands read again (the sidecar of a calibration on the spot, the record of a
// calibration, the parameters of a transform): whole files with parts replaced, and any bytes. What is
// taken is finite, in range, and read again as it was written; the angles of a record belong to its
// parameter file.
#include "apps/cli/JsonOutput.h"
#include "apps/cli/SpotSidecar.h"
#include "apps/cli/calibrate/CalibrationRecord.h"
#include "apps/cli/transform/TransformReport.h"
#include "apps/tables/Errors.h"
#include "fuzz/MemoryFile.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using fuzz::AreSame;
using fuzz::Input;
using fuzz::Require;

namespace fs = std::filesystem;

// A folder of this process for files that have to lie beside each other.
class Folder
{
public:
    Folder()
    {
        std::string name = (fs::temp_directory_path() / "json_fuzzer-XXXXXX").string();
        Require(::mkdtemp(name.data()) != nullptr);
        m_path = name;
    }
    ~Folder()
    {
        std::error_code error;
        fs::remove_all(m_path, error);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string File(const char* name) const { return (m_path / name).string(); }

private:
    fs::path m_path;
};

void Write(const std::string& path, std::string_view content)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    Require(file.good());
}

std::string ContentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// `text` with up to eight parts replaced, or what is left of the input alone.
std::string Changed(std::string text, Input& input)
{
    if (input.Below(4) == 0) return std::string(input.Rest());
    for (int edits = input.Below(8); edits > 0 && !input.Ended(); --edits) {
        const unsigned code = input.Byte() << 8U | input.Byte();
        const std::size_t at = code % (text.size() + 1);
        const auto removed = static_cast<std::size_t>(input.Below(32));
        text.replace(at, std::min(removed, text.size() - at), input.Bytes());
    }
    return text;
}

cli::SpotSidecar WholeSidecar()
{
    cli::SpotSidecar sidecar;
    sidecar.poleLength = 2.0;
    sidecar.madeUtc = "2026-05-04T13:07:58Z";
    field::SpotResult& found = sidecar.result;
    found.reason = field::SpotReason::Usable;
    found.hasValues = true;
    found.axisX = 0.25;
    found.axisSigma = 0.0625;
    found.gyroBias.sigma = {0.01, 0.01, 0.01};
    found.accelerometerBias.sigma = {0.001, 0.001, 0.001};
    found.sensorHeight = 1.5;
    found.delay = 0.03;
    found.delaySigma = 0.002;
    found.a.found = true;
    found.a.correction.x0 = 12.5;
    found.a.bias = 4.5;
    found.a.biasSigma = 0.5;
    found.a.strength = 530.0;
    found.a.dip = 64.0;
    return sidecar;
}

bool IsFinite(const field::SensorVector& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool AreSigmas(const field::SensorVector& v)
{
    return IsFinite(v) && v.x >= 0.0 && v.y >= 0.0 && v.z >= 0.0;
}

bool AreSame(const field::SensorVector& a, const field::SensorVector& b)
{
    return AreSame(a.x, b.x) && AreSame(a.y, b.y) && AreSame(a.z, b.z);
}

void CheckMagnetometer(const field::SpotMagnetometer& m, const field::SpotMagnetometer& again)
{
    Require(m.found == again.found);
    const Incline_MagneticCorrectParameter& c = m.correction;
    for (const double scale : {c.b, c.e})
        Require(scale >= 0.1 && scale <= 10.0);
    for (const double share : {c.a, c.c, c.d})
        Require(std::fabs(share) <= 5.0);
    for (const double offset : {c.x0, c.y0, c.z0})
        Require(std::fabs(offset) <= 1e6);
    Require(std::fabs(m.bias) <= 360.0 && m.biasSigma >= 0.0 && m.strength >= 0.0);
    Require(std::fabs(m.dip) <= 90.0);
    Require(AreSame(m.bias, again.bias) && AreSame(c.x0, again.correction.x0)
            && AreSame(c.e, again.correction.e));
}

void CheckSidecar(Input& input)
{
    static const fuzz::MemoryFile file;
    static const fuzz::MemoryFile copy;
    static const std::string whole = cli::JsonText(SpotJson(WholeSidecar(), {}));
    file.Set(Changed(whole, input));
    cli::SpotSidecar sidecar;
    try {
        sidecar = cli::ReadSpotSidecar(file.Path());
    } catch (const tables::InputError& error) {
        Require(*error.what() != 0);
        return;
    }
    const field::SpotResult& found = sidecar.result;
    Require(found.IsUsable() && found.hasValues);
    Require(sidecar.poleLength > 0.0 && std::isfinite(sidecar.poleLength));
    Require(std::isfinite(found.axisX) && std::isfinite(found.axisY) && found.axisSigma >= 0.0);
    Require(IsFinite(found.gyroBias.value) && AreSigmas(found.gyroBias.sigma));
    Require(IsFinite(found.accelerometerBias.value) && AreSigmas(found.accelerometerBias.sigma));
    Require(std::isfinite(found.delay) && found.delaySigma >= 0.0);
    cli::AgeOf(sidecar);

    copy.Set(cli::JsonText(SpotJson(sidecar, {})));
    const cli::SpotSidecar again = cli::ReadSpotSidecar(copy.Path());
    Require(AreSame(again.poleLength, sidecar.poleLength));
    Require(again.sensorType == sidecar.sensorType);
    Require(AreSame(again.result.axisX, found.axisX) && AreSame(again.result.axisY, found.axisY));
    Require(AreSame(again.result.gyroBias.value, found.gyroBias.value));
    Require(AreSame(again.result.delaySigma, found.delaySigma));
    CheckMagnetometer(found.a, again.result.a);
    CheckMagnetometer(found.b, again.result.b);
}

void CheckTransform(Input& input)
{
    static const fuzz::MemoryFile file;
    static const fuzz::MemoryFile copy;
    static const std::string whole = cli::JsonText({
        {"parameters", cli::ParametersJson({1.00002, -0.75, 120.5, -8.25, 3, 4})}
    });
    file.Set(Changed(whole, input));
    Magnetic_FourParameter p;
    try {
        p = cli::ReadParameters(file.Path());
    } catch (const tables::InputError& error) {
        Require(*error.what() != 0);
        return;
    }
    Require(p.dScale > 0.0 && std::isfinite(p.dScale));
    for (const double value : {p.dRotate, p.dDx, p.dDy, p.dX0, p.dY0})
        Require(std::fabs(value) <= 1e9);
    copy.Set(cli::JsonText(cli::ParametersJson(p)));
    const Magnetic_FourParameter again = cli::ReadParameters(copy.Path());
    Require(AreSame(again.dScale, p.dScale) && AreSame(again.dRotate, p.dRotate));
    Require(AreSame(again.dDx, p.dDx) && AreSame(again.dDy, p.dDy));
    Require(AreSame(again.dX0, p.dX0) && AreSame(again.dY0, p.dY0));
}

void CheckRecord(Input& input)
{
    static const Folder folder;
    static const std::string parameters = folder.File("pole.cfg");
    static const std::string record = folder.File("pole.cfg.json");
    static const std::string whole = [] {
        quality::Calibration calibration;
        calibration.biasAngleA = 2.5;
        calibration.biasAngleB = -1.25;
        tables::OutputFiles files;
        cli::SaveWithRecord(files, parameters, calibration, {4.0, 5.0}, {"joint", "good"});
        files.Finish();
        return ContentOf(record);
    }();
    const bool findsItsOwn = input.Below(2) == 0;
    const std::string content = Changed(whole, input);
    Write(record, content);
    cli::BiasAngles given;
    try {
        given = cli::GivenAnglesOf(parameters, findsItsOwn);
    } catch (const tables::InputError& error) {
        Require(*error.what() != 0 && content != whole);
        return;
    }
    if (content == whole) Require(given.a == 4.0 && given.b == 5.0);
    // What a fit found never counts as given: the sums are those of the parameter file.
    const auto json = nlohmann::json::parse(content);
    const double foundA = json["bias_found_a_deg"].get<double>();
    const double foundB = json["bias_found_b_deg"].get<double>();
    const bool takesAll = foundA == 0.0 && foundB == 0.0 && !findsItsOwn;
    Require(takesAll || std::fabs(given.a + foundA - 6.5) <= 2e-9);
    Require(takesAll || std::fabs(given.b + foundB - 3.75) <= 2e-9);
    Require(!takesAll || std::fabs(given.a) <= 360.0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    switch (input.Below(4)) {
    case 0:
        CheckTransform(input);
        break;
    case 1:
        CheckRecord(input);
        break;
    default:
        CheckSidecar(input);
    }
    return 0;
}
