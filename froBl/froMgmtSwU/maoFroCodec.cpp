#include "froBl/froMgmtSwU/export/maoFroCodec.h"

#include "ose/Kernel.h"

#include <algorithm>
#include <cstring>

namespace maofro {

namespace {

struct Offsets {
    std::size_t froId;   // 0: none
    std::size_t froType;
    std::size_t count;
};

Offsets offsetsOf(ose::SIGSELECT sigNo)
{
    switch (sigNo) {
    case MAOFRO_CREATE_REQ: return {0, 12, 16};
    case MAOFRO_ACTION_REQ:
    case MAOFRO_ACTION_NO_CFM_REQ: return {0, 16, 24};
    default: return {8, 16, 20}; // set, get, delete
    }
}

std::size_t sizeOf(const ose::Signal* signal)
{
    ose::Signal* buffer = const_cast<ose::Signal*>(signal);
    return ose::sigsize(&buffer);
}

const char* bytes(const ose::Signal* signal) { return reinterpret_cast<const char*>(signal); }
char* bytes(ose::Signal* signal) { return reinterpret_cast<char*>(signal); }

std::uint32_t wordAt(const ose::Signal* signal, std::size_t offset) { return ose::loadBe32(bytes(signal) + offset); }

void putWord(ose::Signal* signal, std::size_t offset, std::uint32_t value) { ose::storeBe32(bytes(signal) + offset, value); }

// The text of `declared` bytes at `offset`, up to its NUL; false when it
// runs past the signal or holds no NUL.
bool textAt(const ose::Signal* signal, std::size_t offset, std::size_t declared, std::string& text)
{
    const std::size_t size = sizeOf(signal);
    if (offset > size) return false;
    const std::size_t room = std::min(declared, size - offset);
    const char* start = bytes(signal) + offset;
    const void* end = std::memchr(start, '\0', room);
    if (end == nullptr) return false;
    text.assign(start, static_cast<const char*>(end));
    return true;
}

// A block of `type` with the text at `offset` (its header 12 bytes before).
void putBlock(ose::Signal* signal, std::size_t offset, std::uint32_t type, const std::string& text)
{
    auto* block = reinterpret_cast<ATTRIBUTE_BLOCK_S*>(bytes(signal) + offset - sizeof(ATTRIBUTE_BLOCK_S));
    block->type = type;
    block->elementCount = 1;
    block->zero = 0;
    block->length = blockTextSize(text.size());
    std::memcpy(bytes(signal) + offset, text.c_str(), text.size() + 1);
}

// At least `wanted` bytes, and always room for the text with its NUL.
ose::Signal* allocate(ose::SIGSELECT sigNo, std::size_t wanted, std::size_t textOffset, const std::string& text)
{
    const std::size_t size = std::max(wanted, textOffset + blockTextSize(text.size()));
    return ose::alloc(static_cast<ose::OSBUFSIZE>(size), sigNo);
}

} // namespace

ExtractResult extractRequest(const ose::Signal* signal, RequestFields& fields)
{
    const Offsets at = offsetsOf(ose::signalNumber(signal));
    const std::size_t textOffset = at.count + 4 + sizeof(ATTRIBUTE_BLOCK_S);
    if (sizeOf(signal) < textOffset) return ExtractResult::TooShort;
    fields.transactionId = wordAt(signal, 4);
    fields.froId = at.froId != 0 ? wordAt(signal, at.froId) : 0;
    fields.froType = wordAt(signal, at.froType);
    fields.attributeCount = wordAt(signal, at.count);
    fields.blockType = wordAt(signal, at.count + 4);
    if (fields.attributeCount != 2) return ExtractResult::WrongCount;
    if (fields.blockType != kXmlText) return ExtractResult::NotXml;
    const std::uint32_t declared = wordAt(signal, at.count + 4 + 8);
    return textAt(signal, textOffset, declared, fields.text) ? ExtractResult::Done : ExtractResult::NoText;
}

ose::Signal* makeCreateCfm(std::uint32_t transactionId, std::uint32_t froId, bool ok, const std::string& errorText)
{
    ose::Signal* signal = ok ? ose::alloc(36, MAOFRO_CREATE_CFM) : allocate(MAOFRO_CREATE_CFM, errorText.size() + 46, 32, errorText);
    putWord(signal, 4, transactionId);
    putWord(signal, 8, froId);
    putWord(signal, 12, ok ? 0 : 1);
    putWord(signal, 16, ok ? 0 : 1);
    if (!ok) putBlock(signal, 32, kErrorText, errorText);
    return signal;
}

ose::Signal* makeSetOrDeleteCfm(ose::SIGSELECT sigNo, std::uint32_t transactionId, bool ok,
                                const std::string& errorText)
{
    ose::Signal* signal = ok ? ose::alloc(32, sigNo) : allocate(sigNo, errorText.size() + 42, 28, errorText);
    putWord(signal, 4, transactionId);
    putWord(signal, 8, ok ? 0 : 1);
    putWord(signal, 12, ok ? 0 : 1);
    if (!ok) putBlock(signal, 28, kErrorText, errorText);
    return signal;
}

ose::Signal* makeTextCfm(ose::SIGSELECT sigNo, std::uint32_t transactionId, std::uint32_t result,
                         const std::string& text)
{
    ose::Signal* signal = allocate(sigNo, text.size() + 42, 28, text);
    putWord(signal, 4, transactionId);
    putWord(signal, 8, result);
    putWord(signal, 12, 1);
    putBlock(signal, 28, result == 0 ? kXmlText : kErrorText, text);
    return signal;
}

InServiceFields extractInService(const ose::Signal* signal)
{
    InServiceFields fields;
    if (sizeOf(signal) < 32) return fields;
    fields.revision = wordAt(signal, 4);
    fields.attributeCount = wordAt(signal, 16);
    fields.type = wordAt(signal, 20);
    fields.elementCount = ose::loadBe16(bytes(signal) + 24);
    if (fields.attributeCount == 0 || fields.type != 10 || fields.elementCount != 1) return fields;
    fields.wellFormed = textAt(signal, 32, wordAt(signal, 28), fields.revisionText);
    return fields;
}

ose::Signal* makeInServiceCfm(std::uint32_t revision, bool ok, const std::string& revisionText)
{
    constexpr std::size_t kSize = 132;
    constexpr std::size_t kTextAt = 40;
    ose::Signal* signal = ose::alloc(kSize, MAOFRO_IN_SERVICE_CFM);
    putWord(signal, 4, revision);
    putWord(signal, 8, ok ? 1 : 3);
    putWord(signal, 12, 2);
    putWord(signal, 16, 16);
    ose::storeBe16(bytes(signal) + 20, 2);
    putWord(signal, 28, 14);
    ose::storeBe16(bytes(signal) + 32, 1);
    // The revision text is cut to the room the signal has.
    const std::string text = revisionText.substr(0, kSize - kTextAt - 1);
    putWord(signal, 36, blockTextSize(text.size()));
    std::memcpy(bytes(signal) + kTextAt, text.c_str(), text.size() + 1);
    return signal;
}

} // namespace maofro
