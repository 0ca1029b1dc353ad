#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace SmbusClient {

// How much a transfer carries, and in which form: "byte", "word" (two bytes, low one first),
// "block" (the count goes along) or a number of bytes.
struct Size {
   enum class Form { Bytes, Word, Block };
   Form form = Form::Bytes;
   uint32_t count = 1;
};

// Nothing when the text is no size.
std::optional<Size> parseSize( std::string_view text );

} // namespace SmbusClient
