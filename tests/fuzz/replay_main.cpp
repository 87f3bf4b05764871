// Runs a fuzz target over every file of a corpus folder. Fails on an empty one: it would check
// nothing.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()),
                               content.size());
        ++count;
    }
    std::printf("%d inputs replayed\n", count);
    return count > 0 ? 0 : 1;
}
