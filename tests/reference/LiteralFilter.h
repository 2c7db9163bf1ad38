// SPDX-License-Identifier: MIT
//
// The sample filters, rule by rule and with nothing kept between calls: the reference that the fast
// filters must equal in every bit.
#pragma once

#include "calibration/PoseSensorCenterParameter.h"
#include "positioning/PoseSensorData.h"
#include "tests/reference/Turns.h"

#include <cmath>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace literal {

using List = std::vector<PoseSensorData*>;

struct Rules
{
    turns::TurnAxis axis = turns::TurnAxis::Horizontal;
    bool vertical = axis == turns::TurnAxis::Vertical;

    double V(const PoseSensorData& s) const { return vertical ? s.dMag_z : s.dMag_y; }
    double W(const PoseSensorData& s) const { return vertical ? s.dMag_y : s.dMag_z; }
    double& CenterV(PoseSensorCenterParameter& c) const { return vertical ? c.dZ : c.dY; }
    double& CenterW(PoseSensorCenterParameter& c) const { return vertical ? c.dY : c.dZ; }
    double InPlane() const { return vertical ? 500 : 200; }
    double OffPlane() const { return vertical ? 200 : 100; }
};

class Filter
{
public:
    explicit Filter(Rules given) : rules(given) {}

    void Add(PoseSensorData* s)
    {
        if (!s) return;
        record.push_back(s);
        if (record.size() % 10 != 0)
            AzimuthOne(s);
        else if (Center(record))
            Azimuths(record);
    }

    void Clear()
    {
        if (!rules.vertical) center.nValid = 0;
        record.clear();
        previous = nullptr;
    }

    bool Center(const List& list)
    {
        double sumW = 0, n = 0;
        PoseSensorData *minX = nullptr, *maxX = nullptr, *minV = nullptr, *maxV = nullptr;
        for (PoseSensorData* s : list) {
            if (!s) continue;
            if (n == 0) minX = maxX = minV = maxV = s;
            if (s->dMag_x < minX->dMag_x) minX = s;
            if (s->dMag_x > maxX->dMag_x) maxX = s;
            if (rules.V(*s) < rules.V(*minV)) minV = s;
            if (rules.V(*s) > rules.V(*maxV)) maxV = s;
            sumW += rules.W(*s);
            ++n;
        }
        if (n == 0) return false;
        center.nValid = 1;
        center.dX = (minX->dMag_x + maxX->dMag_x) / 2;
        rules.CenterV(center) = (rules.V(*minV) + rules.V(*maxV)) / 2;
        rules.CenterW(center) =
            rules.vertical ? (rules.W(*minX) + rules.W(*maxX) + rules.W(*minV) + rules.W(*maxV)) / 4
                           : sumW / n;
        double sum = 0;
        for (PoseSensorData* s : list)
            if (s) sum += Distance(*s);
        center.dRadius = sum / n;
        return true;
    }

    bool AzimuthOne(PoseSensorData* s)
    {
        if (!s || !center.nValid) return false;
        const double e = 1e-6, pi = 3.141592653589793;
        const double dx = s->dMag_x - center.dX;
        const double dy = rules.V(*s) - rules.CenterV(center);
        double azimuth = 0;
        if (std::fabs(dx) < e) {
            azimuth = std::fabs(dy) < e ? 0 : dy > e ? 90 : 270;
        } else if (std::fabs(dy) < e) {
            azimuth = dx > e ? 0 : 180;
        } else {
            const double t = std::atan(std::fabs(dx / dy)) * (180 / pi);
            if (dx > e && dy > e)
                azimuth = t;
            else if (dx > e && dy < e)
                azimuth = 180 - t;
            else if (dx < e && dy < e)
                azimuth = 180 + t;
            else
                azimuth = 360 - t;
        }
        if (azimuth < e) azimuth += 360;
        s->dAzimuth = azimuth;
        if (previous) s->SetTurnFlag(s->dAzimuth - previous->dAzimuth < e ? 0 : 1);
        previous = s;
        return true;
    }

    bool Azimuths(const List& list)
    {
        if (!center.nValid) return false;
        for (PoseSensorData* s : list)
            AzimuthOne(s);
        return true;
    }

    bool IsComplete(const List& list)
    {
        Center(list);
        Azimuths(list);
        PoseSensorData* before = nullptr;
        for (PoseSensorData* s : list) {
            if (!s) continue;
            if (before && std::fabs(s->dAzimuth - before->dAzimuth) > 60) return false;
            before = s;
        }
        return true;
    }

    int CoveredSectors() const
    {
        int covered = 0;
        for (int j = 0; j < 72; ++j)
            for (const PoseSensorData* s : record)
                if (s && s->dAzimuth > j * 5 && s->dAzimuth < (j + 1) * 5) {
                    ++covered;
                    break;
                }
        return covered;
    }
    bool IsRecordOK() const { return record.size() >= 72 && CoveredSectors() == 72; }
    int GetRecordRate() const { return static_cast<int>(CoveredSectors() * 5 * 100 / 360.0 + 0.5); }

    static long long Seconds(const PoseSensorData& s)
    {
        return s.nHour * 3600LL + s.nMinute * 60LL + s.nSecond;
    }

    // Empty where the filter returns null.
    List ByTime(const List& list) const
    {
        List kept;
        for (PoseSensorData* s : list) {
            if (!s) continue;
            if (!kept.empty()) {
                const PoseSensorData& last = *kept.back();
                const double d =
                    std::sqrt((s->dMag_x - last.dMag_x) * (s->dMag_x - last.dMag_x)
                              + (rules.V(*s) - rules.V(last)) * (rules.V(*s) - rules.V(last)));
                if (d < 30 && Seconds(*s) - Seconds(last) < 3) continue;
            }
            kept.push_back(s);
        }
        return kept;
    }

    List ByDistance(const List& list)
    {
        List kept;
        for (PoseSensorData* s : list)
            if (s && std::fabs(Distance(*s) - center.dRadius) < rules.InPlane()
                && std::fabs(rules.W(*s) - rules.CenterW(center)) < rules.OffPlane())
                kept.push_back(s);
        return kept;
    }

    static List ByAzimuth(const List& list)
    {
        List kept;
        const int count = static_cast<int>(list.size());
        int s = 0, t = 0, b = 0;
        while (s < count && s != count - 1) {
            for (int i = s; i < count; ++i) {
                const auto* p = list[static_cast<std::size_t>(i)];
                if (p) {
                    ++t;
                    if (p->GetTurnFlag() == 0) ++b;
                }
                if (t != 10 && i != count - 1) continue;
                if (static_cast<double>(b) / t > 0.2) {
                    s += 1;
                    t = 1;
                    b = 0;
                } else {
                    for (int k = s; k < i; ++k)
                        if (list[static_cast<std::size_t>(k)])
                            kept.push_back(list[static_cast<std::size_t>(k)]);
                    s = i;
                    t = 1;
                    b = p && p->GetTurnFlag() == 0 ? 1 : 0;
                }
                break;
            }
        }
        return kept;
    }

    static void Sort(List& list)
    {
        for (std::size_t i = 0; i + 1 < list.size(); ++i) {
            if (!list[i]) continue;
            for (std::size_t j = i + 1; j < list.size(); ++j)
                if (list[j] && list[j]->dAzimuth < list[i]->dAzimuth) std::swap(list[i], list[j]);
        }
        for (std::size_t i = 1; i < list.size(); ++i)
            if (list[i] && list[i - 1])
                list[i]->SetTurnFlag(list[i]->dAzimuth - list[i - 1]->dAzimuth < 1e-6 ? 0 : 1);
    }

    List Screen()
    {
        Center(record);
        Azimuths(record);
        List list = ByTime(record);
        Sort(list);
        if (center.nValid) list = ByDistance(list);
        return ByAzimuth(list);
    }

    List Select(const List& list, int n) const
    {
        const int count = static_cast<int>(list.size());
        if (n > count) return list;
        PoseSensorData *minX = nullptr, *maxX = nullptr, *minV = nullptr, *maxV = nullptr;
        for (PoseSensorData* s : list) {
            if (!s) continue;
            if (!minX || s->dMag_x < minX->dMag_x) minX = s;
            if (!maxX || s->dMag_x > maxX->dMag_x) maxX = s;
            if (!minV || rules.V(*s) < rules.V(*minV)) minV = s;
            if (!maxV || rules.V(*s) > rules.V(*maxV)) maxV = s;
        }
        List taken;
        int counter = 0;
        for (PoseSensorData* s : list) {
            if (!s) continue;
            ++counter;
            if (s == minX || s == maxX || s == minV || s == maxV || counter == count / n) {
                taken.push_back(s);
                counter = 0;
            }
        }
        return taken;
    }

    double Distance(const PoseSensorData& s)
    {
        const double dx = s.dMag_x - center.dX, dv = rules.V(s) - rules.CenterV(center);
        return std::sqrt(dx * dx + dv * dv);
    }

    Rules rules;
    PoseSensorCenterParameter center;
    PoseSensorData* previous = nullptr;
    List record;
};

} // namespace literal
