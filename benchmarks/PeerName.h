// SPDX-License-Identifier: MIT
//
// Peers are compiled twice (tiltpole_peers in CMakeLists.txt): as the program is and, in a shared
// library, for the processor of this machine. The suffix keeps their names apart.
#pragma once

#if defined(TILTPOLE_NATIVE_PEERS)
#define TILTPOLE_PEER(name) name "-native"
#else
#define TILTPOLE_PEER(name) name
#endif
