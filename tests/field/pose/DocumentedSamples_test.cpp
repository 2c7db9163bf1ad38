// SPDX-License-Identifier: MIT
//
// The examples of docs/live.md for makers of pose sensors, fed to the readers.
#include "field/pose/PoseReader.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>

using namespace std::chrono_literals;
using field::PoseFormat;
using field::PoseReader;
using field::PoseSample;

namespace {

// The lines of the block that follows the mark, with CR LF.
std::string Example(const std::string& mark)
{
    std::ifstream file(TILTPOLE_SOURCE_DIR "/docs/live.md");
    std::string line;
    while (std::getline(file, line) && line != "<!-- fed: " + mark + " -->") {
    }
    std::getline(file, line); // ```
    std::string block;
    while (std::getline(file, line) && line != "```")
        block += line + "\r\n";
    return block;
}

std::string BytesOf(const std::string& hexadecimal)
{
    std::istringstream words(hexadecimal);
    std::string bytes;
    for (std::string word; words >> word;)
        bytes += static_cast<char>(std::stoi(word, nullptr, 16));
    return bytes;
}

PoseSample OnlySample(PoseFormat format, const std::string& bytes)
{
    const auto reader = field::MakePoseReader(format);
    reader->Feed(bytes, 1s);
    if (format == PoseFormat::SerialFrames) reader->Feed(bytes, 2s); // the next cycle ends it
    const std::vector<PoseSample> samples = reader->Take();
    EXPECT_GE(samples.size(), 1U);
    EXPECT_EQ(reader->Count().bad, 0U);
    return samples.empty() ? PoseSample{} : samples.front();
}

// Of the example in `$PTPS` and in the CSV.
void ExpectCommon(const PoseSample& sample)
{
    EXPECT_EQ(sample.deviceSeconds, 81.25);
    EXPECT_FALSE(sample.heading);
    EXPECT_EQ(sample.data.dPitch, 12.3456);
    EXPECT_EQ(sample.data.dRoll, -7.5);
    EXPECT_EQ(sample.data.dMag_x, 150.1);
    EXPECT_EQ(sample.data.dMag_z, -380.0);
    EXPECT_EQ(sample.data.dGyro_y, -0.31);
    EXPECT_EQ(sample.data.dAcc_z, 0.968);
}

TEST(DocumentedSamples, OfPtpsAreRead)
{
    const PoseSample sample = OnlySample(PoseFormat::Ptps, Example("ptps"));
    ExpectCommon(sample);
    EXPECT_EQ(sample.data.dMag_x_2, -149.0);
    EXPECT_EQ(sample.data.dMag_y_2, 21.0);
}

TEST(DocumentedSamples, OfCsvAreReadWithOneMagnetometer)
{
    const PoseSample sample = OnlySample(PoseFormat::Csv, Example("csv"));
    ExpectCommon(sample);
    EXPECT_EQ(sample.data.dMag_x_2, -150.1);
    EXPECT_EQ(sample.data.dMag_y_2, 20.5);
}

TEST(DocumentedSamples, OfFramesAreRead)
{
    const PoseSample sample = OnlySample(PoseFormat::SerialFrames, BytesOf(Example("frames")));
    EXPECT_NEAR(sample.data.dPitch, 10.0, 0.005);
    EXPECT_NEAR(sample.data.dRoll, 0.0, 0.005);
    EXPECT_NEAR(sample.data.dAcc_z, 0.985, 0.001);
    EXPECT_NEAR(sample.data.dGyro_x, -10.0, 0.05);
    EXPECT_EQ(sample.data.dMag_x, 1500.0);
    EXPECT_EQ(sample.data.dMag_z, -3800.0);
    EXPECT_EQ(sample.data.nHour, 13);
    EXPECT_EQ(sample.data.nSecond, 58);
    ASSERT_TRUE(sample.deviceSeconds);
    EXPECT_NEAR(std::fmod(*sample.deviceSeconds, 60.0), 58.25, 1e-6);
}

} // namespace
