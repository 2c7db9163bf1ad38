// SPDX-License-Identifier: MIT
//
// field::JobStore: stored points in one file, a GeoPackage that any GIS opens.
#include "field/job/JobStore.h"

#include "field/job/JobTime.h"

#include <cstdio>
#include <vector>

int main()
{
    std::remove("site.gpkg");
    auto job = field::JobStore::Open("site.gpkg", field::JobAccess::Write);
    if (!job) return std::fprintf(stderr, "%s\n", job.error.c_str()), 1;

    field::JobSetup pole;
    pole.poleLength = 2.0;
    pole.north = "model";
    pole.program = "example 1.0";
    const auto setup = job->AddSetup(pole);
    if (!setup) return std::fprintf(stderr, "%s\n", setup.error.c_str()), 1;

    field::JobPoint point;
    point.setup = *setup;
    point.tip = {47.5660567, 19.0083599, 150.0};
    point.utc = field::JobTimeOf("2026-11-22T13:00:10Z").value();
    point.quality = field::Fix::Fixed;
    for (const char* code : {"KERB", "KERB", "TREE"}) {
        point.name = job->FreeName("P");
        point.code = code;
        const auto id = job->AddPoint(point, std::vector<field::JobEpoch>(1));
        std::printf("%s: %s\n", point.name.c_str(), id ? "stored" : id.error.c_str());
        point.tip = {47.5660567, point.tip.longitude + 0.0001, 150.0};
    }
    const auto twice = job->AddPoint(point, {}); // the name is taken
    std::printf("%s: %s\n", point.name.c_str(), twice.error.c_str());

    if (const auto tree = job->Points(); tree) job->VoidPoint(tree->back().id, "wrong tree");
    const auto points = job->Points();
    if (!points) return std::fprintf(stderr, "%s\n", points.error.c_str()), 1;
    for (const field::JobPoint& stored : *points)
        std::printf("%s %s %.7f N %.7f E%s\n", stored.name.c_str(), stored.code.c_str(),
                    stored.tip.latitude, stored.tip.longitude,
                    stored.voidReason ? (", void: " + *stored.voidReason).c_str() : "");
}
