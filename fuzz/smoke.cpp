// SPDX-License-Identifier: MIT
// Runs a fuzz target without a fuzzer: every seed, every beginning of it (of a long one, some), and
// mutations of it that are the same in every run. ZARN_LONG=1 runs fifty times as many.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void run(const std::string& input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

void mutate(std::string& input, std::mt19937& random)
{
    const auto below = [&](std::size_t limit) { return random() % limit; };
    const std::size_t at = below(input.size() + 1);
    switch (below(5)) {
    case 0:
        input.insert(at, 1, static_cast<char>(below(256)));
        break;
    case 1:
        if (at < input.size())
            input[at] = static_cast<char>(below(256));
        break;
    case 2:
        if (at < input.size())
            input.erase(at, 1 + below(8));
        break;
    case 3:
        if (at < input.size())
            input[at] = static_cast<char>(input[at] ^ static_cast<char>(1U << below(8)));
        break;
    default:
        input.insert(at, input.substr(below(input.size() + 1), below(32)));
        break;
    }
}

/// How many inputs it ran.
std::size_t runSeed(const std::string& seed, unsigned mutations)
{
    const std::size_t step = seed.size() / 4096 + 1;
    std::size_t runs = 0;
    for (std::size_t length = 0; length < seed.size(); length += step, ++runs)
        run(seed.substr(0, length));
    run(seed);
    std::mt19937 random(1);
    for (unsigned i = 0; i < mutations; ++i) {
        std::string input = seed;
        for (unsigned changes = 1 + i % 4; changes > 0; --changes)
            mutate(input, random);
        run(input);
    }
    return runs + 1 + mutations;
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 2) {
        std::fputs("usage: a fuzz target and the folder of its seeds\n", stderr);
        return 2;
    }
    const char* longRun = std::getenv("ZARN_LONG");
    const unsigned mutations = longRun && std::string_view(longRun) == "1" ? 100'000 : 2'000;
    unsigned seeds = 0;
    std::size_t inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
        std::ifstream file(entry.path(), std::ios::binary);
        inputs += runSeed({std::istreambuf_iterator<char>(file), {}}, mutations);
        ++seeds;
    }
    std::printf("%u seeds, %zu inputs\n", seeds, inputs);
    return seeds > 0 ? 0 : 1;
}
