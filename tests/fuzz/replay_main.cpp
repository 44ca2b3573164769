// Replays every file of a corpus folder through a fuzz target, so that the inputs that once
// found a fault keep being checked by the ordinary test run (no libFuzzer needed).
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CORPUS_DIR\n", argv[0]);
        return 2;
    }
    std::size_t count = 0;
    std::error_code ec;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[1], ec)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream in(entry.path(), std::ios::binary);
        std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                                        std::istreambuf_iterator<char>());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
        ++count;
    }
    std::printf("replayed %zu inputs from %s\n", count, argv[1]);
    return 0;
}
