// SPDX-License-Identifier: MIT
//
// A log of pose samples: delimited text whose columns are named as in the sample's text form, or as
// ColumnNames.h accepts them (`Pitch`, `mag_a_x`, `Northing [m]`).
//
//   required     dPitch, dRoll [degrees]
//                dMag_x, dMag_y, dMag_z, dMag_x_2, dMag_y_2, dMag_z_2 [counts]
//   antenna      N, E, h or x, y, h in this order [m]; required by some commands, and for some
//                only the rows with an epoch have them
//   optional     Time (hh:mm:ss, a fraction of a second is ignored)
//                dRot, dGyro_x ... dAcc_z, dYaw ... dDeltaXY; a blank field is 0
//   ranges       see apps/tables/Ranges.h; a value outside makes a bad row
//   other        carried through to the output, see CarriedColumns()
//
//     SampleLog log("walk.csv", {.antenna = true, .onBadRow = {}});
//     while (log.Next()) Use(log.Pose(), log.Antenna());
//
// An error dump of the calibration has this format.
#pragma once

#include "apps/tables/ColumnNames.h"
#include "apps/tables/Csv.h"
#include "apps/tables/Ranges.h"
#include "positioning/PoseSensorData.h"
#include <functional>

namespace tables {

class SampleLog
{
public:
    struct Options
    {
        bool antenna = false;      // N, E, h are required
        bool blankAntenna = false; // they may all be blank, see HasAntenna()
        bool inertial = false;     // dGyro_x ... dAcc_z are required, and never blank
        bool magnetometers = true; // dMag_x ... dMag_z_2 are required; else they may be blank
        std::uint64_t mostBytes = UINT64_MAX; // see CsvReader; for callers that keep all samples
        /// Called with `file:line: reason` for each row that cannot be read, which is then skipped.
        /// Without it, such a row is an InputError.
        std::function<void(const std::string&)> onBadRow;
        ColumnChoice columns = {}; // keys: ColumnKeys(), and N, E, h of the antenna
    };

    /// The names of a sample's columns as its text form has them.
    static std::vector<std::string> ColumnKeys();

    /// @param path  "-" is standard input
    /// @throws InputError when the file cannot be read, or lacks columns (all of them are named)
    SampleLog(const std::string& path, Options options);

    /// Reads the next sample.
    /// @return false at the end
    /// @throws InputError for a bad row (see Options), and whenever the file itself cannot be read
    bool Next();

    const PoseSensorData& Pose() const { return m_pose; }
    const xyhCoordinate& Antenna() const { return m_antenna; } // zero unless Options::antenna
    /// Whether the current row has an antenna position.
    bool HasAntenna() const { return m_hasAntenna; }

    /// Positions of Time and of the columns that are not fields of a sample, in the file's order.
    const std::vector<std::size_t>& CarriedColumns() const { return m_carried; }

    /// What each column that is read contains, and its position.
    std::vector<std::pair<std::string, std::size_t>> UsedColumns() const;

    /// Treats the current row as a bad row, for a reason that the caller found.
    void Reject(const std::string& reason) const;

    const CsvReader& Rows() const { return m_rows; }

private:
    struct Column
    {
        const char* key;
        std::size_t position;
        double* target;
        bool mayBeBlank;
        Range range;
    };

    void FindColumns(const Options& options);
    void ReadRow();
    bool AntennaIsGiven() const;
    void ReadTime(std::string_view text);

    CsvReader m_rows;
    std::function<void(const std::string&)> m_onBadRow;
    PoseSensorData m_pose;
    xyhCoordinate m_antenna;
    std::optional<PointColumns> m_point; // of the antenna
    bool m_hasAntenna = false;
    std::vector<Column> m_columns;
    std::optional<std::size_t> m_time;
    std::vector<std::size_t> m_carried;
};

} // namespace tables
