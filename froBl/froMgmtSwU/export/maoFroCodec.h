#pragma once
// The MAOFRO requests read from a received signal and the confirmations
// made for them. Every length that comes with a request is checked against
// the signal's size: a text is taken only up to its NUL inside both.

#include "froBl/froMgmtSwU/export/MaoFroSignals.h"

#include <cstdint>
#include <string>

namespace maofro {

// What a request carries before its XML is parsed.
struct RequestFields {
    std::uint32_t transactionId = 0;
    std::uint32_t froId = 0;   // external id: set, get, delete
    std::uint32_t froType = 0;
    std::uint32_t attributeCount = 0;
    std::uint32_t blockType = 0;
    std::string text;
};

enum class ExtractResult {
    Done,
    TooShort,     // the signal ends before its attribute block
    WrongCount,   // attribute count other than 2
    NotXml,       // a block of another type
    NoText,       // the text runs past the signal or has no NUL
};

// Reads a create, set, get, delete or action request of that number.
ExtractResult extractRequest(const ose::Signal* signal, RequestFields& fields);

// Confirmations; `errorText` is sent only on failure.
ose::Signal* makeCreateCfm(std::uint32_t transactionId, std::uint32_t froId, bool ok, const std::string& errorText);
// MAOFRO_SET_CFM or MAOFRO_DELETE_CFM.
ose::Signal* makeSetOrDeleteCfm(ose::SIGSELECT sigNo, std::uint32_t transactionId, bool ok,
                                const std::string& errorText);
// MAOFRO_GET_CFM or MAOFRO_ACTION_CFM: the XML text with result 0, the error
// text with another result.
ose::Signal* makeTextCfm(ose::SIGSELECT sigNo, std::uint32_t transactionId, std::uint32_t result,
                         const std::string& text);

// The in-service request: its revision, and its revision text when the
// signal has one attribute of type 10 with one element.
struct InServiceFields {
    std::uint32_t revision = 0;
    std::uint32_t attributeCount = 0;
    std::uint32_t type = 0;
    std::uint32_t elementCount = 0;
    bool wellFormed = false;
    std::string revisionText;
};
InServiceFields extractInService(const ose::Signal* signal);
ose::Signal* makeInServiceCfm(std::uint32_t revision, bool ok, const std::string& revisionText);

} // namespace maofro
