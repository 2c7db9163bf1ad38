// SPDX-License-Identifier: MIT
//
// A log of samples, or a dump of them, of any bytes below a header that fits or not: what is taken is
// finite and in range, and a sample that was written as the library writes it is read again.
#include "apps/tables/SampleLog.h"
#include "fuzz/MemoryFile.h"

#include <string>

namespace {

using fuzz::Require;

constexpr const char* kHeader =
    "Time,dPitch,dRoll,dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,N,E,h\n"
    "10:00:00,1,2,3,4,5,6,7,8,9,10,11\n";

void CheckRange(const PoseSensorData& s)
{
    for (const double* field = &s.dPitch; field <= &s.dDeltaXY; ++field)
        Require(std::fabs(*field) <= 1e6);
    Require(std::fabs(s.dPitch) <= 360.0 && std::fabs(s.dRoll) <= 360.0);
    Require(s.nHour >= 0 && s.nHour < 24 && s.nMinute >= 0 && s.nMinute < 60 && s.nSecond >= 0
            && s.nSecond <= 60);
}

// The library's own text of a sample has ten decimals.
void CheckAgain(const PoseSensorData& sample)
{
    static const fuzz::MemoryFile dump;
    const CString line = PoseSensorData::TextHeader() + L"1," + sample.ToText() + L"\r\n";
    std::string text;
    for (int i = 0; i < line.GetLength(); ++i)
        text += static_cast<char>(line[i]);
    dump.Set(text);
    tables::SampleLog log(dump.Path(), {});
    Require(log.Next());
    const PoseSensorData& again = log.Pose();
    const double* copy = &again.dPitch;
    for (const double* field = &sample.dPitch; field <= &sample.dDeltaXY; ++field, ++copy)
        Require(std::fabs(*copy - *field) <= 1e-9);
    Require(again.nHour == sample.nHour && again.nSecond == sample.nSecond);
    Require(!log.Next());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::MemoryFile file;
    fuzz::Input input(data, size);
    const int kind = input.Below(4);
    const std::string bytes(input.Rest());
    file.Set(kind % 2 == 0 ? kHeader + bytes : bytes);
    tables::SampleLog::Options options;
    options.antenna = kind >= 2;
    options.blankAntenna = kind == 3;
    options.onBadRow = [](const std::string& reason) { Require(!reason.empty()); };
    try {
        const bool writesAgain = fuzz::IsOneIn(8, data, size);
        tables::SampleLog log(file.Path(), options);
        for (int row = 0; log.Next(); ++row) {
            CheckRange(log.Pose());
            if (log.HasAntenna()) Require(std::fabs(log.Antenna().x) <= 1e8);
            if (row < 2 && writesAgain) CheckAgain(log.Pose());
        }
    } catch (const tables::InputError& error) {
        Require(*error.what() != 0);
    }
    return 0;
}
