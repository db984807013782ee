#include "froBl/froMgmtSwU/export/xmlReader.h"

#include "froBl/froMgmtSwU/export/xmlGuard.h"

#include <gtest/gtest.h>

namespace {

using Result = xmlReader::Result;

std::string nested(int depth)
{
    std::string text;
    for (int i = 0; i < depth; ++i)
        text += "<struct name=\"s" + std::to_string(i) + "\">";
    for (int i = 0; i < depth; ++i)
        text += "</struct>";
    return text;
}

// The quick reader takes the text, and the parser gives the same elements.
void expectQuickAgrees(const std::string& text)
{
    SCOPED_TRACE(text);
    xmlDocument quick;
    xmlDocument full;
    bool alone = false;
    ASSERT_TRUE(xmlReader::readQuick(text, quick));
    ASSERT_EQ(xmlReader::readFull(text, full, alone), Result::Read);
    EXPECT_TRUE(alone);
    EXPECT_TRUE(quick.root().sameAs(full.root()));
    EXPECT_TRUE(xmlGuard::check(text));
}

// The quick reader leaves the text to the parser, and read gives what the
// parser gives.
void expectParserDecides(const std::string& text, Result expected)
{
    SCOPED_TRACE(text);
    xmlDocument quick;
    xmlDocument full;
    xmlDocument read;
    bool fullAlone = false;
    bool readAlone = false;
    EXPECT_FALSE(xmlReader::readQuick(text, quick));
    const Result result = xmlReader::read(text, read, readAlone);
    EXPECT_EQ(result, expected);
    if (xmlGuard::check(text)) {
        ASSERT_EQ(xmlReader::readFull(text, full, fullAlone), result);
        if (result == Result::Read) {
            EXPECT_TRUE(read.root().sameAs(full.root()));
            EXPECT_EQ(readAlone, fullAlone);
        }
    }
}

TEST(xmlReaderTest, ThePlainFormIsReadQuicklyAndAsTheParserReadsIt)
{
    const std::string body = "<mim version=\"1.0\">\n<class ldn=\"Cabinet=1,HwUnit=1\">\n"
                             "<attr name=\"label\" type=\"STRING\" value=\"a &quot;b&quot; &amp; &lt;c&gt; &apos;\"/>\n"
                             "<struct name=\"productData\">\n<attr name=\"n\" type=\"STRING\" value=\"\"/>\n"
                             "</struct>\n</class>\n</mim>";
    for (const char* declaration : {"", "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n",
                                    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>", "  <?xml version=\"1.0\"?>\r\n"})
        expectQuickAgrees(declaration + body);
    expectQuickAgrees("<a x='single \"quoted\"' y=\"it's\"/>");
    expectQuickAgrees("<a\tx = \"1\"\r\n\v\fy=\"a>b\" ></a >");
    expectQuickAgrees("<a><b/><c><d e=\"\"/></c></a>\n\n");
    expectQuickAgrees("<_a.b-c:d x_1=\"\x01\t\n\"/>");
    expectQuickAgrees(nested(xmlGuard::kMaxDepth));

    // Held to the parser above; pinned here too, in case both went wrong.
    xmlDocument document;
    ASSERT_EQ(xmlReader::read(body, document), Result::Read);
    const xmlDocument::Element label = document.root().firstChild().firstChild();
    EXPECT_EQ(label.attribute("value").value_or("?"), "a \"b\" & <c> '");
    EXPECT_EQ(label.attributeCount(), 3u);
    EXPECT_EQ(label.nextSibling().tag(), "struct");
    EXPECT_EQ(label.nextSibling().firstChild().attribute("value").value_or("?"), "");
    EXPECT_FALSE(label.attribute("missing"));
    EXPECT_FALSE(label.nextSibling().nextSibling());
}

TEST(xmlReaderTest, WhatTheQuickReaderDoesNotKnowTheParserDecides)
{
    expectParserDecides("<a x=\"&#65;&#x42;\"/>", Result::Read);
    expectParserDecides("<a><!-- note --><b/></a>", Result::Read);
    expectParserDecides("<a>text<b/></a>", Result::Read);
    expectParserDecides("<a x=\"caf\xC3\xA9\"/>", Result::Read);
    expectParserDecides("\xEF\xBB\xBF<a/>", Result::Read);
    expectParserDecides("<a x=\"1\"y=\"2\"/>", Result::Read);
    expectParserDecides("<a x=\"<b>\"/>", Result::Read);
    expectParserDecides("<?xml version='1.0'?><a/>", Result::Read);
    expectParserDecides("<a/><b/>", Result::Read);
    expectParserDecides("<a/>trailing", Result::Read);
    expectParserDecides("<?xml version=\"1.0\"?>", Result::NoRootElement);
    // Errors: the parser refuses them, or the guard does first.
    expectParserDecides("", Result::Failed);
    expectParserDecides("<a></b>", Result::Failed);
    expectParserDecides("<a x=\"1\" x=\"2\"/>", Result::Failed);
    expectParserDecides("<a x=\"1/>", Result::Failed);
    expectParserDecides("<a x=\"&unknown;\"/>", Result::Failed);
    expectParserDecides("<a x=\"<!x\"/>", Result::Failed);
    expectParserDecides(std::string("<a x=\"\0\"/>", 11), Result::Failed);
    expectParserDecides(nested(xmlGuard::kMaxDepth + 1), Result::Failed);
}

TEST(xmlReaderTest, AReadDocumentDoesNotKeepWhatWasReadBefore)
{
    xmlDocument document;
    ASSERT_EQ(xmlReader::read("<a x=\"1\"><b/></a>", document), Result::Read);
    ASSERT_EQ(xmlReader::read("<c/>", document), Result::Read);
    EXPECT_EQ(document.root().tag(), "c");
    EXPECT_EQ(document.root().attributeCount(), 0u);
    EXPECT_FALSE(document.root().firstChild());
    // A half-read text leaves nothing of itself when the parser reads it.
    ASSERT_EQ(xmlReader::read("<d y=\"2\"><e/>text</d>", document), Result::Read);
    EXPECT_EQ(document.root().firstChild().tag(), "e");
    EXPECT_FALSE(document.root().firstChild().nextSibling());
}

} // namespace
