#include "calibration/detail/AzimuthSort.h"

#include "calibration/detail/TurnAzimuth.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

namespace detail {
namespace {

struct Entry
{
    double azimuth;
    std::size_t rank; // place among the entries that take part
    PoseSensorData* sample;
};

struct ByAzimuth
{
    bool operator()(const Entry& a, const Entry& b) const { return a.azimuth < b.azimuth; }
};

using Entries = std::vector<Entry>;

// End of the run that starts at `first`: entries that do not descend. A run that descends
// throughout is turned round.
Entries::iterator EndOfRun(Entries::iterator first, Entries::iterator end)
{
    const auto descends = [](const Entry& a, const Entry& b) { return b.azimuth < a.azimuth; };
    const auto rising = std::adjacent_find(first, end, descends);
    if (rising != first || end - first < 2) return rising == end ? end : rising + 1;
    const auto falling = std::adjacent_find(first, end, std::not_fn(descends));
    const auto last = falling == end ? end : falling + 1;
    std::reverse(first, last);
    return last;
}

// Stable. A turn gives few runs, one per revolution, which only have to be merged.
void SortEntries(Entries& entries)
{
    std::vector<Entries::iterator> ends{entries.begin()};
    const std::size_t mostRuns = 2 + entries.size() / 32;
    while (ends.back() != entries.end() && ends.size() <= mostRuns)
        ends.push_back(EndOfRun(ends.back(), entries.end()));
    if (ends.back() != entries.end())
        return std::stable_sort(entries.begin(), entries.end(), ByAzimuth());

    while (ends.size() > 2) {
        std::vector<Entries::iterator> merged{entries.begin()};
        for (std::size_t i = 2; i < ends.size(); i += 2) {
            std::inplace_merge(ends[i - 2], ends[i - 1], ends[i], ByAzimuth());
            merged.push_back(ends[i]);
        }
        if (merged.back() != entries.end()) merged.push_back(entries.end());
        ends = std::move(merged);
    }
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

void OrderEquals(Entries& entries)
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

Entries EntriesOf(const SampleArray& samples)
{
    Entries entries;
    entries.reserve(static_cast<std::size_t>(CountOf(samples)));
    for (int i = 0; i < CountOf(samples); ++i) {
        PoseSensorData* sample = samples.GetAt(i);
        if (TakesPart(sample)) entries.push_back({sample->dAzimuth, entries.size(), sample});
    }
    return entries;
}

void RewriteFlags(const SampleArray& samples)
{
    for (int i = 1; i < CountOf(samples); ++i) {
        PoseSensorData* sample = samples.GetAt(i);
        const PoseSensorData* before = samples.GetAt(i - 1);
        if (sample != nullptr && before != nullptr)
            sample->SetTurnFlag(TurnFlag(sample->dAzimuth, before->dAzimuth));
    }
}

} // namespace

void SortByAzimuth(SampleArray& samples)
{
    Entries entries = EntriesOf(samples);
    SortEntries(entries);
    const auto equal = [](const Entry& a, const Entry& b) { return a.azimuth == b.azimuth; };
    if (std::adjacent_find(entries.begin(), entries.end(), equal) != entries.end())
        OrderEquals(entries);

    auto next = entries.begin();
    for (int i = 0; i < CountOf(samples); ++i)
        if (TakesPart(samples.GetAt(i))) samples.SetAt(i, (next++)->sample);
    RewriteFlags(samples);
}

} // namespace detail
