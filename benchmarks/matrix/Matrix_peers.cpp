// SPDX-License-Identifier: MIT
//
// The matrix operations in Eigen and Armadillo. Armadillo's larger ones run in BLAS and LAPACK,
// which choose their code for the processor themselves.
#include "benchmarks/PeerName.h"
#include "benchmarks/matrix/Operations.h"
#include "benchmarks/matrix/Peers.h"

using namespace contenders;

namespace {

// A size of the compiler's is for small matrices: Eigen's guide ends them at 16.
template <int... N>
void RegisterFixed()
{
    (Operations<EigenFixed<N>>::Register(TILTPOLE_PEER("eigen-fixed"), N), ...);
}

const bool kRegistered = [] {
    RegisterFixed<3, 4, 6, 12>();
    for (const int n : {3, 4, 6, 12, 40}) {
        Operations<EigenDynamic>::Register(TILTPOLE_PEER("eigen"), n);
        Operations<Armadillo>::Register(TILTPOLE_PEER("armadillo"), n);
    }
    for (const int n : {20, 100, 200, 1000}) {
        Operations<EigenDynamic>::RegisterNormal(TILTPOLE_PEER("eigen"), n);
        Operations<Armadillo>::RegisterNormal(TILTPOLE_PEER("armadillo"), n);
    }
    return true;
}();

} // namespace
