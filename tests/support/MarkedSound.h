// Sound that can be known again wherever a piece of it turns up.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vorda::test {

using Samples = std::vector<std::int16_t>;

// No two pieces of it are alike, nor are those of two marks. Its level is never below 24 per cent, and no
// sample is 0.
Samples MarkedSound(unsigned mark, std::size_t samples);

// The sound without the silence ahead of it and behind it.
Samples WithoutSilence(const Samples& heard);

// Where in `sound` the piece stands, whole and without a break; nothing when it doesn't. A piece has eight
// samples or more.
std::optional<std::size_t> PlaceOf(const Samples& piece, const Samples& sound);

// Bytes as they stand in a wave, and back.
std::string BytesOf(const Samples& samples);
Samples SamplesOf(const std::string& bytes);

}  // namespace vorda::test
