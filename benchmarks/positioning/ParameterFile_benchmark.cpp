// SPDX-License-Identifier: MIT
//
// Saving and reading the parameter file, beside the same done step by step: a line formatted as
// wide text, converted and written on its own; the whole content as wide text, searched from its
// start for every key.
//
//   Save         ConfigSave whole: the text, a new file beside the old one, flushed and renamed; in
//                memory or in the working folder, with the two flushes or with none
//   SaveText     its text and writing alone, into the file itself as SaveLiteral does
//
// Other files lie in memory (/dev/shm), where flushing costs a call but no device. The flushes of the
// device are waited for: see wall time.
#include "framework/core/File.h"
#include "framework/core/TextConversion.h"
#include "positioning/InclineSensor_Position.h"
#include "positioning/detail/KeyedTextFile.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cwchar>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace positioning = tiltpole::positioning;

namespace {

bool flushes = true;

} // namespace

// Instead of the system's: the library flushes only where a benchmark asks for it.
extern "C" int fsync(int file)
{
    return flushes ? static_cast<int>(::syscall(SYS_fsync, file)) : 0;
}

namespace {

constexpr std::array<const wchar_t*, 21> kKeys = {
    L"MagneticA.a",        L"MagneticA.b",  L"MagneticA.c",  L"MagneticA.d",
    L"MagneticA.e",        L"MagneticA.x0", L"MagneticA.y0", L"MagneticA.z0",
    L"MagneticB.a",        L"MagneticB.b",  L"MagneticB.c",  L"MagneticB.d",
    L"MagneticB.e",        L"MagneticB.x0", L"MagneticB.y0", L"MagneticB.z0",
    L"CoorTrans.dX",       L"CoorTrans.dY", L"CoorTrans.dZ", L"MagneticBiasAngle_A",
    L"MagneticBiasAngle_B"};

CString PathOf(const std::string& folder, const char* name)
{
    return CString((folder + "/tiltpole-" + std::to_string(::getpid()) + name).c_str());
}

CInclineSensor_Position Calibrated()
{
    CInclineSensor_Position sensor;
    sensor.SetMagneticCorrectPar_A(
        {-12.34567, 45.678, -3.21, 0.0123, -0.0456, 0.0078, 1.0321, 0.9876});
    sensor.SetMagneticCorrectPar_B(
        {8.76543, -23.4567, 6.54, -0.0234, 0.0567, -0.0089, 0.9654, 1.0432});
    sensor.SetMagneticTranslationPar({1.25, -2.5, 3.75});
    sensor.SetMagneticBiasAngle_A(0.75);
    sensor.SetMagneticBiasAngle_B(-0.5);
    return sensor;
}

// A file of one test, gone with it.
struct TemporaryFile
{
    explicit TemporaryFile(const char* name, const std::string& folder = "/dev/shm")
        : path(PathOf(folder, name))
    {}
    ~TemporaryFile() { CFile::Remove(path); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    CString path;
};

void Save(benchmark::State& state)
{
    const TemporaryFile file("save.cfg", state.range(0) != 0 ? "." : "/dev/shm");
    CInclineSensor_Position sensor = Calibrated();
    flushes = state.range(1) != 0;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(sensor.ConfigSave(file.path));
    flushes = true;
}
BENCHMARK(Save)
    ->ArgNames({
        "device", "flushed"
})
    ->ArgsProduct({{0, 1}, {0, 1}});

void SaveText(benchmark::State& state)
{
    const TemporaryFile path("save-text.cfg");
    std::vector<std::string> keys;
    for (const wchar_t* key : kKeys)
        keys.push_back(framework::ToUtf8(key));
    for ([[maybe_unused]] auto _ : state) {
        CFile file;
        file.Open(path.path, CFile::modeCreate | CFile::modeWrite);
        positioning::KeyedTextFile text;
        text.OpenForWriting(path.path);
        double value = 1.0321;
        for (const std::string& key : keys) {
            text.WriteDouble(key, value);
            value = 3.7 - value;
        }
        const std::string& bytes = text.GetContent();
        file.Write(bytes.data(), static_cast<UINT>(bytes.size()));
        benchmark::DoNotOptimize(file.Close());
    }
}
BENCHMARK(SaveText);

void SaveLiteral(benchmark::State& state)
{
    const TemporaryFile path("save-literal.cfg");
    for ([[maybe_unused]] auto _ : state) {
        CFile file;
        file.Open(path.path, CFile::modeCreate | CFile::modeWrite);
        double value = 1.0321;
        for (const wchar_t* key : kKeys) {
            std::array<char, 100> bytes;
            CString line;
            line.Format(L"[%s]%.10f\r\n", key, value);
            const int length =
                WideCharToMultiByte(CP_ACP, 0, line, line.GetLength(), bytes.data(),
                                    static_cast<int>(bytes.size()), nullptr, nullptr);
            file.Write(bytes.data(), static_cast<UINT>(length));
            value = 3.7 - value;
        }
        benchmark::DoNotOptimize(file.Close());
    }
}
BENCHMARK(SaveLiteral);

void Read(benchmark::State& state)
{
    const TemporaryFile file("read.cfg");
    CInclineSensor_Position sensor = Calibrated();
    sensor.ConfigSave(file.path);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(sensor.ConfigRead(file.path));
}
BENCHMARK(Read);

void ReadLiteral(benchmark::State& state)
{
    const TemporaryFile path("read-literal.cfg");
    CInclineSensor_Position sensor = Calibrated();
    sensor.ConfigSave(path.path);
    for ([[maybe_unused]] auto _ : state) {
        CFile file;
        file.Open(path.path, CFile::modeRead);
        std::vector<char> bytes(file.GetLength());
        file.Read(bytes.data(), static_cast<UINT>(bytes.size()));
        file.Close();
        std::vector<wchar_t> wide(bytes.size() + 1);
        MultiByteToWideChar(CP_ACP, 0, bytes.data(), static_cast<int>(bytes.size()), wide.data(),
                            static_cast<int>(wide.size()));
        const CString content(wide.data());
        for (const wchar_t* key : kKeys) {
            CString bracketed;
            bracketed.Format(L"[%s]", key);
            const int at = content.Find(bracketed);
            if (at < 0) continue;
            const int first = at + bracketed.GetLength();
            const CString value = content.Mid(first, content.Find(L'\r', first) - first);
            double number = std::wcstod(value, nullptr);
            benchmark::DoNotOptimize(number);
        }
    }
}
BENCHMARK(ReadLiteral);

// Ten megabytes that look like keys and are none.
void ReadGarbage(benchmark::State& state)
{
    constexpr std::array<const char*, 4> kinds = {"[", "[MagneticA.", "[MagneticX.a]",
                                                  "\xff\x01 ab"};
    constexpr std::size_t kSize = 10 << 20;
    const std::string part = kinds[static_cast<std::size_t>(state.range(0))];
    std::string content;
    while (content.size() < kSize)
        content += part;
    const TemporaryFile path("garbage.cfg");
    CFile file;
    file.Open(path.path, CFile::modeCreate | CFile::modeWrite);
    file.Write(content.data(), static_cast<UINT>(content.size()));
    file.Close();
    state.SetLabel(part);
    CInclineSensor_Position sensor;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(sensor.ConfigRead(path.path));
}
BENCHMARK(ReadGarbage)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

} // namespace
