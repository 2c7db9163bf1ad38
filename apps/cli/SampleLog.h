// SPDX-License-Identifier: MIT
//
// A log of pose samples: delimited text whose columns bear the names of the sample's text form.
//
//   needed       dPitch, dRoll [degrees]; dMag_x, dMag_y, dMag_z, dMag_x_2, dMag_y_2, dMag_z_2
//   [counts] antenna      x (N), y (E), h [m], where a command needs it where given  Time
//   (hh:mm:ss, a fraction is passed over), dRot, dGyro_x ... dAcc_z, dYaw ... dDeltaXY;
//                0 where the field is blank
//   others       are carried through: CarriedColumns() tells which they are
//
// An error dump of the calibration is such a log.
#pragma once

#include "apps/cli/Csv.h"
#include "positioning/PoseSensorData.h"
#include <functional>

namespace cli {

class SampleLog
{
public:
    struct Options
    {
        bool antenna = false; // x, y, h are needed
        /// Called for each row that cannot be read, with `file:line: reason`; the row is then
        /// skipped. Without it such a row ends the reading by an InputError.
        std::function<void(const std::string&)> onBadRow;
    };

    /// @param path  "-" is standard input
    /// @throws InputError when the file cannot be read or lacks columns; all of them are named
    SampleLog(const std::string& path, Options options);

    /// Steps to the next sample.
    /// @return false at the end
    /// @throws InputError as told above, and always when reading itself fails
    bool Next();

    const PoseSensorData& Pose() const { return m_pose; }
    const xyhCoordinate& Antenna() const { return m_antenna; } // zero where not asked for

    /// Positions of the columns that are no field of the sample, and of Time, in the file's order.
    const std::vector<std::size_t>& CarriedColumns() const { return m_carried; }

    /// Leaves the current row out after all, for a reason found behind the reading: as a row that
    /// cannot be read.
    void Reject(const std::string& reason) const;

    const CsvReader& Rows() const { return m_rows; }

private:
    struct Column
    {
        std::size_t position;
        double* target;
        bool mayBeBlank;
    };

    void FindColumns(bool antenna);
    void ReadRow();
    void ReadTime(std::string_view text);

    CsvReader m_rows;
    std::function<void(const std::string&)> m_onBadRow;
    PoseSensorData m_pose;
    xyhCoordinate m_antenna;
    std::vector<Column> m_columns;
    std::optional<std::size_t> m_time;
    std::vector<std::size_t> m_carried;
};

} // namespace cli
