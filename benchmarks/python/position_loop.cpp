// SPDX-License-Identifier: MIT
//
// The loop of C++ that benchmarks/python/position.py compares the package for Python with: it reads the
// same array of samples and fills arrays that it keeps with the same results.
//
//   position_loop FILE N ROUNDS    FILE: N rows of 8 + 3 doubles; prints the processor's seconds of each round and
//                                  the sum of all tips
#include "positioning/InclineSensor_Position.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <memory>
#include <vector>

namespace {

constexpr double kLength = 2.0; // [m]
constexpr std::size_t kColumns = 8;

struct Tips
{
    explicit Tips(std::size_t size)
        : tips(new double[3 * size]), headings(new double[3 * size]), flags(new bool[2 * size])
    {}
    std::unique_ptr<double[]> tips;
    std::unique_ptr<double[]> headings;
    std::unique_ptr<bool[]> flags;
};

void FillPositions(const std::vector<double>& samples, const std::vector<double>& antennas,
                   Tips& found)
{
    const std::size_t size = antennas.size() / 3;
    CInclineSensor_Position position;
    PoseSensorData sample;
    for (std::size_t i = 0; i < size; ++i) {
        const double* row = &samples[kColumns * i];
        sample.dPitch = row[0];
        sample.dRoll = row[1];
        sample.dMag_x = row[2];
        sample.dMag_y = row[3];
        sample.dMag_z = row[4];
        sample.dMag_x_2 = row[5];
        sample.dMag_y_2 = row[6];
        sample.dMag_z_2 = row[7];
        xyhCoordinate point{antennas[3 * i], antennas[3 * i + 1], antennas[3 * i + 2]};
        position.Position(sample, kLength, point);
        found.tips[3 * i] = point.x;
        found.tips[3 * i + 1] = point.y;
        found.tips[3 * i + 2] = point.h;
        found.headings[i] = sample.dYaw;
        found.headings[size + i] = sample.dYaw_2;
        found.headings[2 * size + i] = sample.dYaw_Y;
        found.flags[i] = position.IsStationary() != 0;
        found.flags[size + i] = position.IsMagneticInterference() != 0;
    }
}

std::vector<double> Read(std::ifstream& file, std::size_t count)
{
    std::vector<double> values(count);
    file.read(reinterpret_cast<char*>(values.data()),
              static_cast<std::streamsize>(count * sizeof(double)));
    return values;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) return 2;
    std::ifstream file(argv[1], std::ios::binary);
    const std::size_t size = std::strtoul(argv[2], nullptr, 10);
    const std::vector<double> samples = Read(file, kColumns * size);
    const std::vector<double> antennas = Read(file, 3 * size);
    if (!file) return 2;
    Tips found(size);
    double sum = 0.0;
    for (unsigned long round = 0; round < std::strtoul(argv[3], nullptr, 10); ++round) {
        const std::clock_t start = std::clock();
        FillPositions(samples, antennas, found);
        const std::clock_t took = std::clock() - start;
        std::printf("%.6f\n", static_cast<double>(took) / CLOCKS_PER_SEC);
        sum = 0.0;
        for (std::size_t i = 0; i < 3 * size; ++i)
            sum += found.tips[i];
    }
    std::printf("%.17g\n", sum);
}
