#pragma once
// Text to elements. The plain form that clients and this layer write (a
// declaration, elements with quoted attributes, white space between them) is
// read by a quick reader; whatever it does not know (comments, text,
// character references, bytes beyond ASCII, an error) passes the guard and
// goes to the full parser, which decides. For any text the quick reader
// takes, both give the same elements, and the guard would have passed it.

#include "froBl/froMgmtSwU/export/xmlDocument.h"

#include <string>
#include <string_view>

class xmlReader {
public:
    enum class Result { Read, Failed, NoRootElement };

    // The document's elements; alone tells whether no other element follows
    // the first at the top.
    static Result read(const std::string& text, xmlDocument& document, bool& alone);
    static Result read(const std::string& text, xmlDocument& document);

    // The two readers on their own, without the guard (for the fuzzer and
    // the tests that hold them to each other). readQuick gives false where it
    // leaves the text to the full parser. Neither takes more than the
    // guard's largest document.
    static bool readQuick(std::string_view text, xmlDocument& document);
    static Result readFull(const std::string& text, xmlDocument& document, bool& alone);
};
