#pragma once
// What a node of the site is, as the management system configures it: its
// names, its radio access technology, and whether it runs the support system
// (the primary).

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

class NodeRecord {
public:
    static constexpr std::size_t kNameSize = 256;

    bool hasData() const { return radioAccessTechnology > 0 || logicalNameSet || fullDistinguishedNameSet; }

    // The 256 bytes as they come; the last one is forced to NUL.
    void setLogicalName(const char* name)
    {
        copyName(logicalName, name);
        logicalNameSet = true;
    }
    void setFullDistinguishedName(const char* name)
    {
        copyName(fullDistinguishedName, name);
        fullDistinguishedNameSet = true;
    }

    std::uint8_t supportSystemControl = 0;
    std::array<char, kNameSize> logicalName{};
    bool logicalNameSet = false;
    std::array<char, kNameSize> fullDistinguishedName{};
    bool fullDistinguishedNameSet = false;
    std::uint32_t radioAccessTechnology = 0; // 0: not given

private:
    static void copyName(std::array<char, kNameSize>& to, const char* from)
    {
        to.fill('\0');
        if (from != nullptr) std::memcpy(to.data(), from, strnlen(from, kNameSize));
        to.back() = '\0';
    }
};
