// A fuzz target without libFuzzer: feeds every file named on the command
// line, or found in a folder named there, to LLVMFuzzerTestOneInput once.
// A failed check aborts, as under the fuzzer.  Replaying nothing fails too.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int *argc, char ***argv);

int main(int argc, char **argv) {
    if (LLVMFuzzerInitialize != nullptr) LLVMFuzzerInitialize(&argc, &argv);
    namespace fs = std::filesystem;
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        if (!fs::is_directory(argv[i])) {
            inputs.emplace_back(argv[i]);
            continue;
        }
        std::vector<fs::path> found;
        for (const auto &entry : fs::directory_iterator(argv[i])) {
            const bool hidden = entry.path().filename().string().starts_with(".");
            if (entry.is_regular_file() && !hidden) found.push_back(entry.path());
        }
        std::sort(found.begin(), found.end());
        inputs.insert(inputs.end(), found.begin(), found.end());
    }
    for (const fs::path &input : inputs) {
        std::ifstream in(input, std::ios::binary);
        if (!in) {
            std::fprintf(stderr, "cannot read %s\n", input.c_str());
            return 1;
        }
        const std::vector<char> bytes((std::istreambuf_iterator<char>(in)),
                                      std::istreambuf_iterator<char>());
        std::fprintf(stderr, "Running: %s\n", input.c_str());
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    }
    std::fprintf(stderr, "%zu inputs replayed\n", inputs.size());
    return inputs.empty() ? 1 : 0;
}
