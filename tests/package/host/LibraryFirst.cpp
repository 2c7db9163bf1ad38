// SPDX-License-Identifier: MIT
// The host's names come behind every header of the library.
#include "EveryHeader.h"

#include "HostDetail.h"

double HostTurn(const detail::Turn& turn, detail::Reading which)
{
    return which == detail::Reading::A ? turn.degrees : -turn.degrees;
}
