#pragma once

#include "Compression/LzfseFormat.hpp"
#include "Compression/StreamLayout.hpp"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <vector>

// Inputs and helpers shared by the codec's tests.
namespace tarnwick::LzfseTestData {

inline std::filesystem::path vectorDirectory() { return std::filesystem::path(TARNWICK_SHARED_DIR) / "lzfse-vectors"; }

inline std::vector<std::uint8_t> readFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>() };
}

// splitmix64: reproducible bytes that no compressor can shrink.
inline std::vector<std::uint8_t> randomBytes(std::size_t count, std::uint64_t seed)
{
    std::vector<std::uint8_t> bytes(count);
    for (std::uint8_t& byte : bytes) {
        seed += 0x9E3779B97F4A7C15ull;
        std::uint64_t z = seed;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        byte = static_cast<std::uint8_t>((z ^ (z >> 31)) >> 24);
    }
    return bytes;
}

// Something like a scan record stream: repeated folder names, small varying numbers.
inline std::vector<std::uint8_t> recordLike(std::size_t count, std::uint64_t seed)
{
    static const char* const names[] = { "Library", "Caches", "node_modules", "Documents", "src", "build", "index.json", "photo.jpg" };
    std::vector<std::uint8_t> noise = randomBytes(count, seed);
    std::vector<std::uint8_t> bytes;
    bytes.reserve(count + 32);
    for (std::size_t i = 0; bytes.size() < count; ++i) {
        std::string name = names[noise[i % noise.size()] % 8];
        bytes.insert(bytes.end(), name.begin(), name.end());
        for (int k = 0; k < 5; ++k)
            bytes.push_back(noise[(i * 5 + k) % noise.size()] & 0x3F);
    }
    bytes.resize(count);
    return bytes;
}

// A case's name as a test's name may be: letters and digits, "_" for anything else.
inline auto caseName = [](const auto& info) {
    std::string name = info.param.name;
    for (char& c : name)
        c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name;
};

inline std::vector<LzfseFormat::BlockMagic> blockMagics(std::span<const std::uint8_t> stream)
{
    StreamLayout layout;
    std::vector<LzfseFormat::BlockMagic> magics;
    if (!layout.read(stream, SIZE_MAX)) {
        for (const StreamLayout::Block& block : layout.blocks())
            magics.push_back(block.magic);
    }
    return magics;
}

}
