// SPDX-License-Identifier: MIT
#include "calibration/solver/ErrorDump.h"

#include "calibration/ShortMemory.h"
#include "framework/core/File.h"
#include "framework/core/Paths.h"
#include "framework/core/TextConversion.h"

#include <string>

namespace tiltpole::calibration {
namespace {

void Write(CFile& file, const CString& line)
{
    const std::string bytes = framework::ToUtf8(line.GetString());
    file.Write(bytes.data(), static_cast<UINT>(bytes.size()));
}

void Append(const wchar_t* fileName, const CArray<PoseSensorData, const PoseSensorData&>& samples)
{
    const CString folder = framework::ApplicationDataFolder();
    framework::MakeFolder(folder);
    CFile file;
    if (!file.Open(folder + L"/" + fileName,
                   CFile::modeWrite | CFile::modeCreate | CFile::modeNoTruncate))
        return;

    file.SeekToEnd();
    Write(file, PoseSensorData::TextHeader());
    for (int i = 0; i < samples.GetSize(); ++i) {
        CString row;
        row.Format(L"%3d,%s,\r\n", i, samples[i].ToText().GetString());
        Write(file, row);
    }
    file.Flush();
    file.Close();
}

} // namespace

void AppendErrorDump(const wchar_t* fileName,
                     const CArray<PoseSensorData, const PoseSensorData&>& samples)
{
    OrFailure([&] { Append(fileName, samples); });
}

} // namespace tiltpole::calibration
