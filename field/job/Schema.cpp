// SPDX-License-Identifier: MIT
#include "field/job/Schema.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace tiltpole::field {

namespace {

constexpr std::int64_t kApplicationId = 0x47504B47; // "GPKG"
constexpr std::int64_t kVersion = 10300;            // GeoPackage 1.3.0

// Tables of the standard, OGC 12-128r17 annex C, with the column of the extension gpkg_crs_wkt: a
// geographic system with heights has no text in the older form.
constexpr const char* kGeoPackage = R"sql(
PRAGMA application_id = 1196444487;
PRAGMA user_version = 10300;
CREATE TABLE gpkg_spatial_ref_sys (
    srs_name TEXT NOT NULL,
    srs_id INTEGER NOT NULL PRIMARY KEY,
    organization TEXT NOT NULL,
    organization_coordsys_id INTEGER NOT NULL,
    definition TEXT NOT NULL,
    description TEXT,
    definition_12_063 TEXT NOT NULL);
CREATE TABLE gpkg_contents (
    table_name TEXT NOT NULL PRIMARY KEY,
    data_type TEXT NOT NULL,
    identifier TEXT UNIQUE,
    description TEXT DEFAULT '',
    last_change DATETIME NOT NULL DEFAULT (strftime('%Y-%m-%dT%H:%M:%fZ','now')),
    min_x DOUBLE, min_y DOUBLE, max_x DOUBLE, max_y DOUBLE,
    srs_id INTEGER,
    CONSTRAINT fk_gc_r_srs_id FOREIGN KEY (srs_id) REFERENCES gpkg_spatial_ref_sys(srs_id));
CREATE TABLE gpkg_geometry_columns (
    table_name TEXT NOT NULL,
    column_name TEXT NOT NULL,
    geometry_type_name TEXT NOT NULL,
    srs_id INTEGER NOT NULL,
    z TINYINT NOT NULL,
    m TINYINT NOT NULL,
    CONSTRAINT pk_geom_cols PRIMARY KEY (table_name, column_name),
    CONSTRAINT uk_gc_table_name UNIQUE (table_name),
    CONSTRAINT fk_gc_tn FOREIGN KEY (table_name) REFERENCES gpkg_contents(table_name),
    CONSTRAINT fk_gc_srs FOREIGN KEY (srs_id) REFERENCES gpkg_spatial_ref_sys(srs_id));
CREATE TABLE gpkg_extensions (
    table_name TEXT,
    column_name TEXT,
    extension_name TEXT NOT NULL,
    definition TEXT NOT NULL,
    scope TEXT NOT NULL,
    CONSTRAINT ge_tce UNIQUE (table_name, column_name, extension_name));
INSERT INTO gpkg_extensions VALUES ('gpkg_spatial_ref_sys', 'definition_12_063', 'gpkg_crs_wkt',
    'http://www.geopackage.org/spec130/#extension_crs_wkt', 'read-write');
INSERT INTO gpkg_spatial_ref_sys VALUES
('Undefined Cartesian SRS', -1, 'NONE', -1, 'undefined',
    'undefined Cartesian coordinate reference system', 'undefined'),
('Undefined geographic SRS', 0, 'NONE', 0, 'undefined',
    'undefined geographic coordinate reference system', 'undefined'),
('WGS 84', 4326, 'EPSG', 4326,
    'GEOGCS["WGS 84",DATUM["WGS_1984",SPHEROID["WGS 84",6378137,298.257223563,AUTHORITY["EPSG","7030"]],AUTHORITY["EPSG","6326"]],PRIMEM["Greenwich",0,AUTHORITY["EPSG","8901"]],UNIT["degree",0.0174532925199433,AUTHORITY["EPSG","9122"]],AXIS["Latitude",NORTH],AXIS["Longitude",EAST],AUTHORITY["EPSG","4326"]]',
    'latitude and longitude on the WGS 84 ellipsoid',
    'GEODCRS["WGS 84",DATUM["World Geodetic System 1984",ELLIPSOID["WGS 84",6378137,298.257223563,LENGTHUNIT["metre",1]]],PRIMEM["Greenwich",0,ANGLEUNIT["degree",0.0174532925199433]],CS[ellipsoidal,2],AXIS["geodetic latitude (Lat)",north,ORDER[1],ANGLEUNIT["degree",0.0174532925199433]],AXIS["geodetic longitude (Lon)",east,ORDER[2],ANGLEUNIT["degree",0.0174532925199433]],ID["EPSG",4326]]'),
('WGS 84 with height', 4979, 'EPSG', 4979, 'undefined',
    'latitude, longitude and height above the WGS 84 ellipsoid',
    'GEODCRS["WGS 84",DATUM["World Geodetic System 1984",ELLIPSOID["WGS 84",6378137,298.257223563,LENGTHUNIT["metre",1]]],PRIMEM["Greenwich",0,ANGLEUNIT["degree",0.0174532925199433]],CS[ellipsoidal,3],AXIS["geodetic latitude (Lat)",north,ORDER[1],ANGLEUNIT["degree",0.0174532925199433]],AXIS["geodetic longitude (Lon)",east,ORDER[2],ANGLEUNIT["degree",0.0174532925199433]],AXIS["ellipsoidal height (h)",up,ORDER[3],LENGTHUNIT["metre",1]],ID["EPSG",4979]]');
)sql";

// docs/job.md explains each column. Rows refer to each other, and those that hold measurements
// cannot be deleted, whichever program tries.
constexpr const char* kJob = R"sql(
CREATE TABLE setup (
    id INTEGER PRIMARY KEY AUTOINCREMENT NOT NULL,
    made_utc DATETIME NOT NULL,
    pole_m DOUBLE, arp_to_apc_m DOUBLE,
    sensor_type INTEGER,
    calibration BLOB,
    heading_sd_deg DOUBLE, tilt_sd_deg DOUBLE, pole_sd_m DOUBLE,
    delay_ms DOUBLE, delay_sd_ms DOUBLE,
    axis_offset_deg DOUBLE,
    north TEXT, model TEXT, program TEXT);
CREATE TABLE point (
    id INTEGER PRIMARY KEY AUTOINCREMENT NOT NULL,
    geom POINT NOT NULL,
    name TEXT NOT NULL UNIQUE,
    code TEXT, note TEXT,
    utc DATETIME NOT NULL,
    setup_id INTEGER NOT NULL REFERENCES setup(id),
    h_ell_m DOUBLE, h_msl_m DOUBLE, geoid_m DOUBLE,
    sd_n_m DOUBLE, sd_e_m DOUBLE, sd_h_m DOUBLE, cov_ne_m2 DOUBLE,
    epochs INTEGER, left_out INTEGER,
    tilt_deg DOUBLE, azimuth_true_deg DOUBLE, declination_deg DOUBLE,
    quality INTEGER, station TEXT, age_s DOUBLE,
    ant_lat DOUBLE, ant_lon DOUBLE, ant_h_ell_m DOUBLE,
    method TEXT NOT NULL,
    gate TEXT, forced BOOLEAN NOT NULL,
    replaces INTEGER UNIQUE REFERENCES point(id),
    void_reason TEXT);
CREATE TABLE epoch (
    id INTEGER PRIMARY KEY AUTOINCREMENT NOT NULL,
    point_id INTEGER NOT NULL REFERENCES point(id),
    n INTEGER NOT NULL,
    used BOOLEAN NOT NULL,
    why TEXT,
    moment_s DOUBLE,
    receiver TEXT, pose TEXT,
    disturbed BOOLEAN,
    UNIQUE (point_id, n));
CREATE TABLE lean_pair (
    id INTEGER PRIMARY KEY AUTOINCREMENT NOT NULL,
    first_id INTEGER NOT NULL REFERENCES point(id),
    second_id INTEGER NOT NULL REFERENCES point(id),
    apart_m DOUBLE, heading_error_deg DOUBLE,
    made_utc DATETIME NOT NULL);
CREATE TABLE stake (
    id INTEGER PRIMARY KEY AUTOINCREMENT NOT NULL,
    name TEXT NOT NULL,
    design_lat DOUBLE, design_lon DOUBLE, design_h_ell_m DOUBLE,
    point_id INTEGER REFERENCES point(id),
    d_n_m DOUBLE, d_e_m DOUBLE, d_h_m DOUBLE,
    made_utc DATETIME NOT NULL);
CREATE TABLE event (
    id INTEGER PRIMARY KEY AUTOINCREMENT NOT NULL,
    utc DATETIME NOT NULL,
    kind TEXT NOT NULL,
    text TEXT);
CREATE TRIGGER point_stays BEFORE DELETE ON point BEGIN
    SELECT RAISE(ABORT, 'a point is not deleted: give it a void_reason'); END;
CREATE TRIGGER epoch_stays BEFORE DELETE ON epoch BEGIN
    SELECT RAISE(ABORT, 'an epoch is not deleted'); END;
CREATE TRIGGER setup_stays BEFORE DELETE ON setup BEGIN
    SELECT RAISE(ABORT, 'a setup is not deleted'); END;
INSERT INTO gpkg_contents (table_name, data_type, identifier, description, srs_id) VALUES
    ('point', 'features', 'point', 'tips of the pole', 4979),
    ('setup', 'attributes', 'setup', 'pole, sensor and settings', NULL),
    ('epoch', 'attributes', 'epoch', 'what the points were computed from', NULL),
    ('lean_pair', 'attributes', 'lean_pair', 'checks by opposite leans', NULL),
    ('stake', 'attributes', 'stake', 'design points and what was staked', NULL),
    ('event', 'attributes', 'event', 'what happened on the way', NULL);
INSERT INTO gpkg_geometry_columns VALUES ('point', 'geom', 'POINT', 4979, 1, 0);
)sql";

struct Table
{
    const char* columns; // PRAGMA table_info
    std::string_view names;
};

// In the order of the tables above.
constexpr Table kTables[]{
    Table{"PRAGMA table_info(setup)",
          "id made_utc pole_m arp_to_apc_m sensor_type calibration heading_sd_deg tilt_sd_deg "
          "pole_sd_m delay_ms delay_sd_ms axis_offset_deg north model program"                         },
    Table{"PRAGMA table_info(point)",
          "id geom name code note utc setup_id h_ell_m h_msl_m geoid_m sd_n_m sd_e_m sd_h_m "
          "cov_ne_m2 epochs left_out tilt_deg azimuth_true_deg declination_deg quality station "
          "age_s ant_lat ant_lon ant_h_ell_m method gate forced replaces void_reason"                  },
    Table{"PRAGMA table_info(epoch)",     "id point_id n used why moment_s receiver pose disturbed"    },
    Table{"PRAGMA table_info(lean_pair)",
          "id first_id second_id apart_m heading_error_deg made_utc"                                   },
    Table{"PRAGMA table_info(stake)",     "id name design_lat design_lon design_h_ell_m point_id "
                                      "d_n_m d_e_m d_h_m made_utc"},
    Table{"PRAGMA table_info(event)",     "id utc kind text"                                           },
};

std::vector<std::string> ColumnsOf(const Sqlite& sqlite, const Table& table)
{
    std::vector<std::string> present;
    Statement columns(sqlite, table.columns);
    while (columns.Step()) {
        columns.Integer();
        present.push_back(columns.Text());
    }
    return present;
}

// The first of a table's columns that is not present; empty: none.
std::string_view Missing(const Table& table, const std::vector<std::string>& present)
{
    std::string_view names = table.names;
    while (!names.empty()) {
        const std::string_view name = names.substr(0, names.find(' '));
        if (std::find(present.begin(), present.end(), name) == present.end()) return name;
        names.remove_prefix(std::min(names.size(), name.size() + 1));
    }
    return {};
}

std::int64_t Pragma(const Sqlite& sqlite, const char* sql)
{
    Statement pragma(sqlite, sql);
    return pragma.Step() ? pragma.Integer() : 0;
}

} // namespace

void MakeJob(Sqlite& sqlite)
{
    Transaction transaction(sqlite);
    sqlite.Run(kGeoPackage);
    sqlite.Run(kJob);
    transaction.Commit();
}

std::string NotAJob(const Sqlite& sqlite)
{
    if (Pragma(sqlite, "PRAGMA application_id") != kApplicationId)
        return "the file is not a job: it is no GeoPackage";
    const std::int64_t version = Pragma(sqlite, "PRAGMA user_version");
    if (version / 100 < kVersion / 100 || version >= 20000)
        return "the file is not a job: it is a GeoPackage of another version";
    std::string_view lacking;
    for (const Table& table : kTables) {
        const std::vector<std::string> present = ColumnsOf(sqlite, table);
        if (present.empty()) return "the file is not a job: it is another program's GeoPackage";
        if (lacking.empty()) lacking = Missing(table, present);
    }
    if (lacking.empty()) return {};
    return "the file is not a job of this version: it lacks the column " + std::string(lacking);
}

} // namespace tiltpole::field
