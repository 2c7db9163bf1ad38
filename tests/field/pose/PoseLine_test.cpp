// SPDX-License-Identifier: MIT
#include "field/pose/PoseLine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace std::chrono_literals;
using field::PoseFormat;
using field::PoseReader;
using field::PoseSample;
using tiltpole::field::Framed;

namespace {

const std::string kBody =
    "PTPS,1,81250,12.3456,-7.5,,150.1,-20.5,380,-149,21,381,1,2,3,0.01,0.02,0.98";

std::vector<PoseSample> SamplesOf(const std::string& bytes)
{
    const auto reader = field::MakePoseReader(PoseFormat::Ptps);
    reader->Feed(bytes, 1s);
    return reader->Take();
}

} // namespace

TEST(PoseLine, HoldsAnglesReadingsAndTheTimeOfTheSensor)
{
    const std::vector<PoseSample> samples = SamplesOf(Framed(kBody));
    ASSERT_EQ(samples.size(), 1U);
    const PoseSample& sample = samples[0];
    EXPECT_EQ(sample.deviceSeconds, 81.25);
    EXPECT_FALSE(sample.heading);
    EXPECT_EQ(sample.arrival, 1s);
    const PoseSensorData& data = sample.data;
    const double expected[] = {12.3456, -7.5, 150.1, -20.5, 380.0, -149.0, 21.0,
                               381.0,   1.0,  2.0,   3.0,   0.01,  0.02,   0.98};
    const double found[] = {data.dPitch,   data.dRoll,    data.dMag_x,   data.dMag_y,  data.dMag_z,
                            data.dMag_x_2, data.dMag_y_2, data.dMag_z_2, data.dGyro_x, data.dGyro_y,
                            data.dGyro_z,  data.dAcc_x,   data.dAcc_y,   data.dAcc_z};
    for (std::size_t i = 0; i < std::size(expected); ++i)
        EXPECT_EQ(found[i], expected[i]) << i;
}

TEST(PoseLine, MayHoldAHeadingAndNoTime)
{
    const std::vector<PoseSample> samples =
        SamplesOf(Framed("PTPS,1,,1,2,359.5,0,0,0,0,0,0,0,0,0,0,0,0"));
    ASSERT_EQ(samples.size(), 1U);
    EXPECT_EQ(samples[0].heading, 359.5);
    EXPECT_FALSE(samples[0].deviceSeconds);
}

TEST(PoseLine, IsTheSameHoweverItIsCut)
{
    const std::string bytes = Framed(kBody) + "noise\r\n" + Framed(kBody);
    for (std::size_t size = 1; size < bytes.size(); ++size) {
        const auto reader = field::MakePoseReader(PoseFormat::Ptps);
        for (std::size_t at = 0; at < bytes.size(); at += size)
            reader->Feed(std::string_view(bytes).substr(at, size), std::chrono::seconds(at));
        const std::vector<PoseSample> samples = reader->Take();
        ASSERT_EQ(samples.size(), 2U) << size;
        EXPECT_EQ(samples[1].data.dPitch, 12.3456) << size;
        EXPECT_EQ(samples[1].arrival, std::chrono::seconds((bytes.size() - 1) / size * size));
    }
}

TEST(PoseLine, IsRefusedAndCountedWhereItsFormIsWrong)
{
    const std::string bad[] = {
        "PTPS,2,81250,12,-7,,1,2,3,4,5,6,7,8,9,1,2,3",   // version
        "PTPS,1,81250,12,-7,,1,2,3,4,5,6,7,8,9,1,2",     // one short
        "PTPS,1,81250,12,-7,,1,2,3,4,5,6,7,8,9,1,2,3,4", // one more
        "PTPS,1,81250,,-7,,1,2,3,4,5,6,7,8,9,1,2,3",     // no pitch
        "PTPS,1,81250,12,,,1,2,3,4,5,6,7,8,9,1,2,3",     // no roll
        "PTPS,1,8x,12,-7,,1,2,3,4,5,6,7,8,9,1,2,3",
        "PTPS,1,8,12,-7,north,1,2,3,4,5,6,7,8,9,1,2,3",
        "PTPS,1,8,12,-7,,1,2,3,4,5,6,7,8,9,1,2,3 4",
    };
    for (const std::string& body : bad) {
        const auto reader = field::MakePoseReader(PoseFormat::Ptps);
        reader->Feed(Framed(body), 1s);
        EXPECT_TRUE(reader->Take().empty()) << body;
        EXPECT_EQ(reader->Count().bad, 1U) << body;
    }
}

TEST(PoseLine, IsRefusedWithAWrongChecksum)
{
    std::string line = Framed(kBody);
    line[10] = '9';
    const auto reader = field::MakePoseReader(PoseFormat::Ptps);
    reader->Feed(line, 1s);
    reader->Feed(Framed("GNZDA,130758.00,22,11,2026,00,00"), 1s);
    reader->Feed(Framed("PABC,1,2"), 1s);
    EXPECT_TRUE(reader->Take().empty());
    EXPECT_EQ(reader->Count().bad, 1U);
    EXPECT_EQ(reader->Count().other, 2U);
    EXPECT_EQ(reader->Count().lines, 0U);
}

// Whether a value is plausible is not the reader's to say: it reports what the sensor sent.
TEST(PoseLine, PassesNotANumberOn)
{
    const std::vector<PoseSample> samples =
        SamplesOf(Framed("PTPS,1,,nan,2,,0,0,0,0,0,0,0,0,0,0,0,0"));
    ASSERT_EQ(samples.size(), 1U);
    EXPECT_TRUE(std::isnan(samples[0].data.dPitch));
}

TEST(PoseReader, ReadsSentencesWhereNoFormatIsNamed)
{
    const auto reader = field::MakePoseReader(static_cast<PoseFormat>(99));
    ASSERT_TRUE(reader);
    reader->Feed(Framed(kBody), 1s);
    EXPECT_EQ(reader->Take().size(), 1U);
}

TEST(PoseReader, KeepsTheNewestOfSamplesThatNobodyTakes)
{
    const auto reader = field::MakePoseReader(PoseFormat::Ptps);
    for (int i = 0; i < 10000; ++i) {
        std::string body = "PTPS,1," + std::to_string(i) + ",1,2,,1,2,3,4,5,6,7,8,9,1,2,3";
        reader->Feed(Framed(body), 1s);
    }
    const std::vector<PoseSample> samples = reader->Take();
    EXPECT_LE(samples.size(), 4096U);
    EXPECT_GE(samples.size(), 2048U);
    EXPECT_EQ(samples.back().deviceSeconds, 9.999);
    EXPECT_EQ(reader->Count().samples, 10000U);
    EXPECT_EQ(reader->Count().lost, 10000U - samples.size());
}
