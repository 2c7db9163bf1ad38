#include "calibration/detail/AzimuthSort.h"

#include "calibration/detail/TurnAzimuth.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace detail {
namespace {

struct Entry
{
    double azimuth;
    std::size_t rank; // place among the entries that take part
    PoseSensorData* sample;
};

bool ComesBefore(const Entry& a, const Entry& b)
{
    return a.azimuth < b.azimuth || (!(b.azimuth < a.azimuth) && a.rank < b.rank);
}

// How many of the ranks noted so far lie below a given one: a Fenwick tree.
class RankCounter
{
public:
    explicit RankCounter(std::size_t ranks) : m_Tree(ranks + 1, 0) {}

    void Note(std::size_t rank)
    {
        for (std::size_t i = rank + 1; i < m_Tree.size(); i += i & (~i + 1))
            ++m_Tree[i];
    }

    std::size_t Below(std::size_t rank) const
    {
        std::size_t count = 0;
        for (std::size_t i = rank; i > 0; i &= i - 1)
            count += m_Tree[i];
        return count;
    }

private:
    std::vector<std::size_t> m_Tree;
};

// Entries of equal azimuth [first, last) in rank order, rotated as the exchange sort leaves them:
// each lesser entry that follows in the original order sends the foremost of those met so far to
// the back.
void RotateEquals(Entry* first, Entry* last, std::size_t ranks, const RankCounter& lesser)
{
    std::vector<PoseSensorData*> met;
    for (const Entry* entry = first; entry != last; ++entry) {
        met.push_back(entry->sample);
        const std::size_t next = entry + 1 != last ? (entry + 1)->rank : ranks;
        const std::size_t passed = lesser.Below(next) - lesser.Below(entry->rank);
        const auto turn = static_cast<std::ptrdiff_t>(passed % met.size());
        std::rotate(met.begin(), met.begin() + turn, met.end());
    }
    for (PoseSensorData* sample : met)
        (first++)->sample = sample;
}

void OrderEquals(std::vector<Entry>& entries)
{
    const std::size_t ranks = entries.size();
    RankCounter lesser(ranks);
    for (std::size_t first = 0, last = 0; first < ranks; first = last) {
        for (last = first + 1; last < ranks && entries[last].azimuth == entries[first].azimuth;)
            ++last;
        if (last - first > 1)
            RotateEquals(&entries[first], &entries[first] + (last - first), ranks, lesser);
        for (std::size_t i = first; i < last; ++i)
            lesser.Note(entries[i].rank);
    }
}

bool TakesPart(const PoseSensorData* sample)
{
    return sample != nullptr && !std::isnan(sample->dAzimuth);
}

std::vector<Entry> EntriesOf(const SampleArray& samples)
{
    std::vector<Entry> entries;
    entries.reserve(static_cast<std::size_t>(CountOf(samples)));
    for (int i = 0; i < CountOf(samples); ++i) {
        PoseSensorData* sample = samples.GetAt(i);
        if (TakesPart(sample)) entries.push_back({sample->dAzimuth, entries.size(), sample});
    }
    return entries;
}

} // namespace

void SortByAzimuth(SampleArray& samples)
{
    std::vector<Entry> entries = EntriesOf(samples);
    std::sort(entries.begin(), entries.end(), ComesBefore);
    const auto equal = [](const Entry& a, const Entry& b) { return a.azimuth == b.azimuth; };
    if (std::adjacent_find(entries.begin(), entries.end(), equal) != entries.end())
        OrderEquals(entries);

    auto next = entries.begin();
    for (int i = 0; i < CountOf(samples); ++i)
        if (TakesPart(samples.GetAt(i))) samples.SetAt(i, (next++)->sample);

    for (int i = 1; i < CountOf(samples); ++i) {
        PoseSensorData* sample = samples.GetAt(i);
        const PoseSensorData* before = samples.GetAt(i - 1);
        if (sample != nullptr && before != nullptr)
            sample->SetTurnFlag(TurnFlag(sample->dAzimuth, before->dAzimuth));
    }
}

} // namespace detail
