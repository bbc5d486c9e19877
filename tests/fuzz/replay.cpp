// Gives a fuzz target every file of the folders that are named.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "fuzz.h"

int main(int argc, char **argv)
{
    std::vector<std::filesystem::path> seeds;
    for (int i = 1; i < argc; ++i) {
        for (const auto &entry : std::filesystem::directory_iterator(argv[i]))
            seeds.push_back(entry.path());
    }
    std::sort(seeds.begin(), seeds.end());
    for (const std::filesystem::path &seed : seeds) {
        std::ostringstream content;
        content << std::ifstream(seed, std::ios::binary).rdbuf();
        const std::string bytes = content.str();
        // Said first: a crash says nothing.
        std::printf("%s: %zu bytes\n", seed.c_str(), bytes.size());
        std::fflush(stdout);
        // In memory of just its size, so that a sanitizer sees one byte too many being read.
        const std::vector<uint8_t> exact(bytes.begin(), bytes.end());
        LLVMFuzzerTestOneInput(exact.data(), exact.size());
    }
    return seeds.empty() ? 1 : 0;
}
