#pragma once
// The re-encoding of texts taken from the XML parser: names, types and values
// stay escaped everywhere in the object layer, also in the database.

#include <string>
#include <string_view>

class xmlEscape {
public:
    // One pass from the left: & " ' < > become &amp; &quot; &apos; &lt; &gt;.
    static std::string encode(std::string_view text);
    static void appendEncoded(std::string& out, std::string_view text);
    // True if text can stand between double quotes of an XML attribute as it
    // is: no raw < > " ' and every & starts one of the five entities or a
    // character reference.
    static bool isEncoded(std::string_view text);
};
