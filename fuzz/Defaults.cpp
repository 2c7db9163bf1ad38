// SPDX-License-Identifier: MIT
//
// What every fuzzer runs with unless its command line or ASAN_OPTIONS say otherwise: inputs of at most
// TILTPOLE_FUZZ_LONGEST bytes; chosen evenly, since the bookkeeping of libFuzzer's other way takes longer
// than a run; and memory that was freed is used again sooner, while it is still in the caches.
#include <string>
#include <vector>

// Names that the runtime libraries look for.
extern "C" const char* __asan_default_options(); // NOLINT(bugprone-reserved-identifier)
extern "C" int LLVMFuzzerInitialize(int* count, char*** words);

const char* __asan_default_options() // NOLINT(bugprone-reserved-identifier)
{
    return "quarantine_size_mb=8:malloc_context_size=12";
}

// Of two equal options the last one counts.
int LLVMFuzzerInitialize(int* count, char*** words)
{
    static std::string longest = "-max_len=" + std::to_string(TILTPOLE_FUZZ_LONGEST);
    static std::string evenly = "-entropic=0";
    static std::vector<char*> all(*words, *words + *count);
    all.insert(all.begin() + 1, {longest.data(), evenly.data()});
    all.push_back(nullptr);
    *count = static_cast<int>(all.size()) - 1;
    *words = all.data();
    return 0;
}
