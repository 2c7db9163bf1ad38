// SPDX-License-Identifier: MIT
#include "calibration/filter/AzimuthSort.h"

#include "calibration/filter/TurnAzimuth.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <iterator>
#include <utility>
#include <vector>

namespace tiltpole::calibration {
namespace {

using Iterator = Candidates::iterator;

constexpr auto Precedes = [](const Candidate& a, const Candidate& b) {
    return a.azimuth < b.azimuth;
};

// End of the run that starts at `first`: entries that do not descend. A run that descends
// throughout is reversed.
Iterator EndOfRun(Iterator first, Iterator end)
{
    const auto descends = [](const Candidate& a, const Candidate& b) { return Precedes(b, a); };
    const auto rising = std::adjacent_find(first, end, descends);
    if (rising != first || end - first < 2) return rising == end ? end : rising + 1;
    const auto falling = std::adjacent_find(first, end, std::not_fn(descends));
    const auto last = falling == end ? end : falling + 1;
    std::reverse(first, last);
    return last;
}

// Merges two runs; the part of either that does not overlap the other is in place already.
void MergeRuns(Iterator first, Iterator middle, Iterator last)
{
    first = std::upper_bound(first, middle, *middle, Precedes);
    last = std::lower_bound(middle, last, *std::prev(middle), Precedes);
    std::inplace_merge(first, middle, last, Precedes);
}

// Stable. A turn has few runs, one per revolution, which only need merging.
void SortRuns(Candidates entries)
{
    std::vector<Iterator> ends{entries.begin()};
    const std::size_t mostRuns = 2 + entries.size() / 32;
    while (ends.back() != entries.end() && ends.size() <= mostRuns)
        ends.push_back(EndOfRun(ends.back(), entries.end()));
    if (ends.back() != entries.end())
        return std::stable_sort(entries.begin(), entries.end(), Precedes);

    while (ends.size() > 2) {
        std::vector<Iterator> merged{entries.begin()};
        for (std::size_t i = 2; i < ends.size(); i += 2) {
            MergeRuns(ends[i - 2], ends[i - 1], ends[i]);
            merged.push_back(ends[i]);
        }
        if (merged.back() != entries.end()) merged.push_back(entries.end());
        ends = std::move(merged);
    }
}

// Counts the places noted so far that precede a given one: a Fenwick tree.
class PlaceCounter
{
public:
    explicit PlaceCounter(std::size_t places) : m_Tree(places + 1, 0) {}

    void Note(std::size_t place)
    {
        for (std::size_t i = place + 1; i < m_Tree.size(); i += i & (~i + 1))
            ++m_Tree[i];
    }

    std::size_t Before(std::size_t place) const
    {
        std::size_t count = 0;
        for (std::size_t i = place; i > 0; i &= i - 1)
            count += m_Tree[i];
        return count;
    }

private:
    std::vector<std::size_t> m_Tree;
};

// Entries of equal azimuth [first, last) in the order of their places, rotated as the exchange
// sort leaves them: each lesser entry that follows in the original order sends the foremost of
// those met so far to the back.
void RotateEquals(Iterator first, Iterator last, std::size_t places, const PlaceCounter& lesser)
{
    std::vector<Candidate> met;
    for (auto entry = first; entry != last; ++entry) {
        met.push_back(*entry);
        const std::size_t next = entry + 1 != last ? (entry + 1)->place : places;
        const std::size_t passed = lesser.Before(next) - lesser.Before(entry->place);
        const auto turn = static_cast<std::ptrdiff_t>(passed % met.size());
        std::rotate(met.begin(), met.begin() + turn, met.end());
    }
    std::copy(met.begin(), met.end(), first);
}

void OrderEquals(Candidates entries, std::size_t places)
{
    PlaceCounter lesser(places);
    for (auto first = entries.begin(); first != entries.end();) {
        const auto last = std::find_if(
            first, entries.end(), [&](const Candidate& entry) { return Precedes(*first, entry); });
        if (last - first > 1) RotateEquals(first, last, places, lesser);
        for (; first != last; ++first)
            lesser.Note(first->place);
    }
}

// Entries that all take part, of an array of so many places.
void SortEntries(Candidates entries, std::size_t places)
{
    SortRuns(entries);
    const auto equal = [](const Candidate& a, const Candidate& b) {
        return a.azimuth == b.azimuth;
    };
    if (std::adjacent_find(entries.begin(), entries.end(), equal) != entries.end())
        OrderEquals(entries, places);
}

bool TakesPart(const Candidate& candidate)
{
    return !std::isnan(candidate.azimuth);
}

void RewriteFlags(Candidates candidates)
{
    const Candidate* before = nullptr;
    for (Candidate& candidate : candidates) {
        if (candidate.sample != nullptr) {
            if (before == nullptr || before->sample == nullptr) {
                candidate.turnFlag = candidate.sample->GetTurnFlag();
            } else {
                candidate.turnFlag = TurnFlag(candidate.azimuth, before->azimuth);
                candidate.sample->SetTurnFlag(candidate.turnFlag);
            }
        }
        before = &candidate;
    }
}

} // namespace

void SortByAzimuth(Candidates candidates)
{
    if (std::all_of(candidates.begin(), candidates.end(), TakesPart)) {
        SortEntries(candidates, candidates.size());
    } else {
        std::vector<Candidate> moving;
        std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(moving), TakesPart);
        SortEntries(moving, candidates.size());
        auto next = moving.begin();
        for (Candidate& candidate : candidates)
            if (TakesPart(candidate)) candidate = *next++;
    }
    RewriteFlags(candidates);
}

void SortByAzimuth(SampleArray& samples)
{
    std::vector<Candidate> candidates = CandidatesOf(samples);
    SortByAzimuth(candidates);
    for (int i = 0; i < CountOf(samples); ++i)
        samples.SetAt(i, candidates[static_cast<std::size_t>(i)].sample);
}

} // namespace tiltpole::calibration
