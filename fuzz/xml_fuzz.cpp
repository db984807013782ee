// XML attribute bodies from the management system: parsed into a record,
// built back, and every complex value read as a tree and written again. The
// quick reader is held to the parser: whatever it takes, the guard passes
// and the parser reads as the same elements.

#include "fuzz/FuzzTrace.h"
#include "froBl/froMgmtSwU/export/xmlGuard.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"
#include "froBl/froMgmtSwU/export/xmlReader.h"
#include "froBl/froMgmtSwU/export/xmlTree.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzzTraceSetUp();
    return 0;
}

namespace {

void holdQuickReaderToParser(const std::string& text)
{
    xmlDocument quick;
    if (!xmlReader::readQuick(text, quick))
        return;
    xmlDocument full;
    bool alone = false;
    if (!xmlGuard::check(text) || xmlReader::readFull(text, full, alone) != xmlReader::Result::Read || !alone ||
        !quick.root().sameAs(full.root()))
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    holdQuickReaderToParser(text);
    xmlHandler& handler = xmlHandler::instance();
    xmlDocumentRecord record;
    if (handler.parse(text, record)) {
        for (std::size_t i = 0; i < record.values.size(); ++i) {
            xmlTree tree(record.names[i], record.types[i], record.values[i]);
            if (!tree.failed()) (void)tree.toString();
        }
        std::string again;
        (void)handler.build(record.ldn, record.version, record.names, record.types, record.values, again);
    }
    // The same bytes as one complex value of each kind.
    for (const char* type : {"struct", "array", "moref", "S32", "U32"}) {
        xmlTree tree("v", type, text);
        if (!tree.failed()) (void)tree.toString();
    }
    return 0;
}
