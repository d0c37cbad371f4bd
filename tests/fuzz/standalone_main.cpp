// Runs a fuzz target without libFuzzer: every file of the corpus as it is, then mutations of them for some seconds. The
// mutations depend on the seed alone, so a failure comes back.
//
//     fuzz_NAME SECONDS CORPUS_FILE_OR_FOLDER...

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t largest_input = 64 * 1024;

std::vector<Bytes> read_corpus(const std::vector<std::string>& paths)
{
    std::vector<Bytes> corpus;
    const auto add = [&](const std::filesystem::path& path) {
        std::ifstream in(path, std::ios::binary);
        Bytes bytes{std::istreambuf_iterator<char>(in), {}};
        if (bytes.size() <= largest_input)
            corpus.push_back(std::move(bytes));
    };
    for (const std::string& path : paths) {
        if (!std::filesystem::is_directory(path)) {
            add(path);
            continue;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
            if (entry.is_regular_file())
                add(entry.path());
        }
    }
    return corpus;
}

/// Some bytes changed, cut out, doubled, or taken from another input.
Bytes mutate(Bytes bytes, const std::vector<Bytes>& corpus, std::mt19937_64& random)
{
    const auto below = [&](std::size_t n) { return n == 0 ? 0 : static_cast<std::size_t>(random() % n); };
    for (std::size_t changes = 1 + below(8); changes > 0; --changes) {
        const std::size_t at = below(bytes.size() + 1);
        const std::size_t length = std::min(bytes.size() - at, 1 + below(16));
        const auto place = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        switch (random() % 6) {
        case 0:
            if (at < bytes.size())
                bytes[at] = static_cast<std::uint8_t>(random());
            break;
        case 1:
            bytes.erase(place, place + static_cast<std::ptrdiff_t>(length));
            break;
        case 2: {
            const Bytes copy(place, place + static_cast<std::ptrdiff_t>(length));
            bytes.insert(place, copy.begin(), copy.end());
            break;
        }
        case 3:
            bytes.insert(place, static_cast<std::uint8_t>("0123456789 +-*/.;\"\n\0\xff"[below(21)]));
            break;
        case 4: {
            const Bytes& other = corpus[below(corpus.size())];
            const std::size_t from = below(other.size());
            const std::size_t count = std::min(other.size() - from, 1 + below(64));
            bytes.insert(place, other.begin() + static_cast<std::ptrdiff_t>(from),
                         other.begin() + static_cast<std::ptrdiff_t>(from + count));
            break;
        }
        default:
            bytes.resize(at);
        }
    }
    if (bytes.size() > largest_input)
        bytes.resize(largest_input);
    return bytes;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::cerr << "usage: " << argv[0] << " SECONDS CORPUS...\n";
        return 2;
    }
    const double seconds = std::atof(argv[1]);
    const std::vector<Bytes> corpus = read_corpus({argv + 2, argv + argc});
    if (corpus.empty()) {
        std::cerr << "the corpus is empty\n";
        return 2;
    }
    std::mt19937_64 random(20240607);
    long runs = 0;
    for (const Bytes& bytes : corpus) {
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
        ++runs;
    }
    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() < seconds) {
        const Bytes bytes = mutate(corpus[random() % corpus.size()], corpus, random);
        // Kept until it has passed, so that a crash leaves its input behind.
        std::ofstream("last_input_of_" + std::filesystem::path(argv[0]).filename().string(), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
        ++runs;
    }
    std::cout << runs << " inputs passed\n";
    return 0;
}
