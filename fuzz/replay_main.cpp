// Runs a fuzzer's entry over files, for compilers without libFuzzer. Usage: NAME_fuzz FILE...
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "no files to replay\n";
        return 2;
    }
    for (int i = 1; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        if (!file) {
            std::cerr << "cannot open " << argv[i] << '\n';
            return 1;
        }
        std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::cout << "replayed " << argc - 1 << " files\n";
    return 0;
}
