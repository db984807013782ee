#pragma once
// Limits that a body must keep before it reaches the XML parser. The parser
// descends recursively and keeps everything in memory, so depth and size are
// checked on the raw text first; so is the encoding, which the parser trusts
// to find the ends of characters. Document type declarations (the door to
// entity expansion) are not part of the format and are refused, and so is a
// reference to an entity that the format does not know.

#include <cstddef>
#include <string_view>

class xmlGuard {
public:
    // Larger than any management signal and than the largest stored object.
    static constexpr std::size_t kMaxDocumentBytes = 1u << 20;
    // mim, class, action, then structs and arrays: real values nest far less.
    static constexpr int kMaxDepth = 32;
    // One value as stored in one column, escaped, without its NUL: the
    // database reads a text column into 49152 bytes.
    static constexpr std::size_t kMaxValueBytes = 49151;

    // True if text may be given to the parser; otherwise traced and false.
    static bool check(std::string_view text);

private:
    static bool opensElement(char next);
    static bool isUtf8(std::string_view text);
    static bool nestingWithinLimit(std::string_view text);
    static bool referencesKnown(std::string_view text);
};
