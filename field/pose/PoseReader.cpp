// SPDX-License-Identifier: MIT
#include "field/pose/PoseReader.h"

#include "field/pose/PoseLine.h"
#include "field/pose/PoseTable.h"
#include "field/pose/SerialFrames.h"

#include <utility>

namespace field {

namespace {

constexpr std::size_t kMostSamples = 4096;

} // namespace

PoseReader::~PoseReader() = default;

std::vector<PoseSample> PoseReader::Take()
{
    return std::exchange(m_samples, {});
}

void PoseReader::Emit(const PoseSample& sample)
{
    if (m_samples.size() >= kMostSamples) {
        m_samples.erase(m_samples.begin(), m_samples.begin() + kMostSamples / 2);
        m_counters.lost += kMostSamples / 2;
    }
    m_samples.push_back(sample);
    ++m_counters.samples;
}

std::unique_ptr<PoseReader> MakePoseReader(PoseFormat format)
{
    switch (format) {
    case PoseFormat::Csv:
        return std::make_unique<tiltpole::field::PoseTable>();
    case PoseFormat::SerialFrames:
        return std::make_unique<tiltpole::field::SerialFrames>();
    case PoseFormat::Ptps:
        break;
    }
    return std::make_unique<tiltpole::field::PoseLines>();
}

} // namespace field
