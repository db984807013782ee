#include "froBl/froMgmtSwU/export/xmlGuard.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"
#include "froBl/froMgmtSwU/export/xmlTree.h"
#include "froBl/froMgmtSwU/testSupport/traceCapture.h"

#include "ose/World.h"

#include <gtest/gtest.h>

namespace {

const std::string kDocument = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
                              "<mim version=\"1.0\">\n"
                              "<class ldn=\"Cabinet=1,HwUnit=1\">\n"
                              "<attr name=\"faultIndicator\" type=\"S32\" value=\"1\"/>\n"
                              "<attr name=\"label\" type=\"STRING\" value=\"a &quot;b&quot; &amp; &lt;c&gt;\"/>\n"
                              "<struct name=\"productData\">\n"
                              "<attr name=\"productName\" type=\"STRING\" value=\"PSU\"/>\n"
                              "<array name=\"ports\">\n"
                              "<attr type=\"S32\" value=\"1\"/>\n"
                              "<attr type=\"S32\" value=\"2\"/>\n"
                              "</array>\n"
                              "</struct>\n"
                              "</class>\n"
                              "</mim>";

const xmlHandler& handler()
{
    return xmlHandler::instance();
}

std::string wrap(const std::string& classBody, const std::string& mimAttributes = " version=\"1.0\"")
{
    return "<mim" + mimAttributes + "><class ldn=\"X=1\">" + classBody + "</class></mim>";
}

TEST(xmlHandlerTest, ParsesAttributesAndKeepsComplexValuesAsText)
{
    xmlDocumentRecord record;
    ASSERT_TRUE(handler().parse(kDocument, record));
    EXPECT_EQ(record.version, "1.0");
    EXPECT_EQ(record.ldn, "Cabinet=1,HwUnit=1");
    EXPECT_EQ(record.kind, xmlDocumentRecord::Plain);
    EXPECT_EQ(record.attributeCount, 3);
    EXPECT_EQ(record.names, (std::vector<std::string>{"faultIndicator", "label", "productData"}));
    EXPECT_EQ(record.types, (std::vector<std::string>{"S32", "STRING", "struct"}));
    EXPECT_EQ(record.values[1], "a &quot;b&quot; &amp; &lt;c&gt;") << "stays escaped, once";
    EXPECT_EQ(record.values[2], "<struct name=\"productData\">\n"
                                "<attr name=\"productName\" type=\"STRING\" value=\"PSU\"/>\n"
                                "<array name=\"ports\">\n"
                                "<attr type=\"S32\" value=\"1\"/>\n"
                                "<attr type=\"S32\" value=\"2\"/>\n"
                                "</array>\n"
                                "</struct>\n");
}

TEST(xmlHandlerTest, BuildWritesTheSameDocumentThatWasParsed)
{
    xmlDocumentRecord record;
    ASSERT_TRUE(handler().parse(kDocument, record));
    std::string text;
    ASSERT_TRUE(handler().build(record.ldn, record.version, record.names, record.types, record.values, text));
    EXPECT_EQ(text, kDocument);

    ASSERT_TRUE(handler().build("A=1", "", {"x"}, {""}, {"v"}, text));
    EXPECT_EQ(text, "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<class ldn=\"A=1\">\n<attr name=\"x\" value=\"v\"/>\n"
                    "</class>");
    EXPECT_FALSE(handler().parse(text, record)) << "a document without mim is refused";
}

TEST(xmlHandlerTest, ActionAndFaultBodiesAreRecognised)
{
    xmlDocumentRecord record;
    ASSERT_TRUE(handler().parse(wrap("<action name=\"restart\"><attr name=\"how\" type=\"U32\" value=\"2\"/>"
                                     "<struct name=\"s\"/></action>"),
                                record));
    EXPECT_EQ(record.kind, xmlDocumentRecord::Action);
    EXPECT_EQ(record.actionName, "restart");
    EXPECT_EQ(record.values, (std::vector<std::string>{"2", "<struct name=\"s\">\n</struct>\n"}));

    ASSERT_TRUE(handler().parse(wrap("<fault name=\"f\"><attr name=\"a\" type=\"S32\" value=\"1\"/></fault>"), record));
    EXPECT_EQ(record.kind, xmlDocumentRecord::Fault);
    EXPECT_EQ(record.faultName, "f");
    EXPECT_FALSE(handler().parse(wrap("<fault name=\"f\"><array name=\"a\"/></fault>"), record));
}

TEST(xmlHandlerTest, EdgesOfTheFormat)
{
    xmlDocumentRecord record;
    ASSERT_TRUE(handler().parse(wrap("", ""), record));
    EXPECT_EQ(record.version, "");
    EXPECT_EQ(record.attributeCount, 0);
    EXPECT_TRUE(record.names.empty());

    EXPECT_FALSE(handler().parse(wrap("<value name=\"x\"/>"), record));
    EXPECT_FALSE(handler().parse("<other><class ldn=\"X=1\"/></other>", record));
    EXPECT_FALSE(handler().parse("<mim><other/></mim>", record));
    EXPECT_FALSE(handler().parse(wrap("<struct name=\"s\"><attr name=\"b\" type=\"bool\" value=\"1\"/></struct>"),
                                 record));

    // A missing attribute is an empty text; U64 passes the handler.
    ASSERT_TRUE(handler().parse(wrap("<attr name=\"big\" type=\"U64\"/>"), record));
    EXPECT_EQ(record.values, std::vector<std::string>{""});
}

TEST(xmlHandlerTest, MalformedAndTruncatedBodiesAreRefusedWithATrace)
{
    xmlDocumentRecord record;
    traceCapture trace;
    EXPECT_FALSE(handler().parse("<mim version=\"1.0\"><class ldn=\"X=1\"><attr name=\"a\"", record));
    EXPECT_TRUE(trace.contains("Parsing of xmlbuffer Failed"));
    EXPECT_FALSE(handler().parse("", record));
    EXPECT_FALSE(handler().parse("<mim><class ldn=\"X=1\"></mim></class>", record));
    // Every cut of a valid body is either refused or still a complete document.
    for (std::size_t length = 0; length < kDocument.size(); ++length) {
        const bool parsed = handler().parse(kDocument.substr(0, length), record);
        EXPECT_FALSE(parsed) << "cut at " << length;
    }
}

TEST(xmlHandlerTest, HostileBodiesAreRefusedBeforeTheParserSeesThem)
{
    xmlDocumentRecord record;
    traceCapture trace;

    std::string deep;
    for (int i = 0; i < 5000; ++i)
        deep += "<struct name=\"s\">";
    EXPECT_FALSE(handler().parse(wrap(deep), record));
    EXPECT_TRUE(trace.contains("nest deeper"));

    const std::string long_value(xmlGuard::kMaxValueBytes + 1, 'y');
    EXPECT_FALSE(handler().parse(wrap("<attr name=\"a\" type=\"STRING\" value=\"" + long_value + "\"/>"), record));
    EXPECT_TRUE(trace.contains("more than 49151"));

    const std::string entities = "<?xml version=\"1.0\"?><!DOCTYPE mim [<!ENTITY a \"aaaaaaaaaa\">"
                                 "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">]>" +
                                 wrap("<attr name=\"a\" type=\"STRING\" value=\"&b;\"/>");
    EXPECT_FALSE(handler().parse(entities, record));
    EXPECT_FALSE(handler().parse(std::string("<mim>\0</mim>", 12), record));
    EXPECT_FALSE(handler().parse(wrap("<![CDATA[<attr/>]]>"), record));

    // An entity the format does not know would be lost by the parser.
    EXPECT_FALSE(handler().parse(wrap("<attr name=\"a\" type=\"STRING\" value=\"&unknown;\"/>"), record));
    EXPECT_FALSE(handler().parse(wrap("<attr name=\"a\" type=\"STRING\" value=\"a & b\"/>"), record));
    ASSERT_TRUE(handler().parse(wrap("<attr name=\"a\" type=\"STRING\" value=\"&#65;&#x263A;&apos;\"/>"), record));
    EXPECT_EQ(record.values[0], "A\u263A&apos;");

    // References to characters that cannot stand in a document.
    for (const char* reference : {"&#0;", "&#x0;", "&#xD800;", "&#57343;", "&#x110000;", "&#99999999;"}) {
        EXPECT_FALSE(handler().parse(wrap("<attr name=\"a\" type=\"STRING\" value=\"x" + std::string(reference) +
                                          "y\"/>"),
                                     record))
            << reference;
    }
    ASSERT_TRUE(handler().parse(wrap("<attr name=\"a\" type=\"STRING\" value=\"&#xD7FF;&#xE000;&#x10FFFF;\"/>"),
                                record));
    EXPECT_EQ(record.values[0], "\uD7FF\uE000\U0010FFFF");
}

TEST(xmlHandlerTest, ABodyThatIsNotUtf8IsRefusedAndCharactersOfEveryLengthAreKept)
{
    xmlDocumentRecord record;
    traceCapture trace;
    // A cut sequence at the end made the parser read past the text.
    const std::string cut = "<mim version=\"1.0\">\n<class ldn=\"C1\xC3>\xFF\xFF\xFF</class>\n</m\x97\x92\xC1\xEC";
    EXPECT_FALSE(handler().parse(cut, record));
    EXPECT_TRUE(trace.contains("not valid UTF-8"));
    for (const char* broken : {"\xC3", "\xE2\x98", "\xF0\x9F\x98", "\x80", "\xC0\xAF", "\xE0\x80\xAF",
                               "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"}) {
        const std::string text = wrap("<attr name=\"a\" type=\"STRING\" value=\"" + std::string(broken) + "\"/>");
        EXPECT_FALSE(handler().parse(text, record)) << text;
        EXPECT_FALSE(handler().parse(text + broken, record)) << text;
    }
    const std::string whole = "\xC3\xA9\xE2\x98\xBA\xED\x9F\xBF\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF";
    ASSERT_TRUE(handler().parse(wrap("<attr name=\"a\" type=\"STRING\" value=\"" + whole + "\"/>"), record));
    EXPECT_EQ(record.values[0], whole);
}

// n elements, each inside the one before.
std::string nested(int n, const std::string& tag = "s")
{
    std::string text;
    for (int i = 0; i < n; ++i)
        text += "<" + tag + ">";
    for (int i = 0; i < n; ++i)
        text += "</" + tag + ">";
    return text;
}

TEST(xmlHandlerTest, TheGuardCountsDepthAsTheParserDoesAndHoldsAtTheLimit)
{
    EXPECT_TRUE(xmlGuard::check(nested(xmlGuard::kMaxDepth)));
    {
        traceCapture trace;
        EXPECT_FALSE(xmlGuard::check(nested(xmlGuard::kMaxDepth + 1)));
        EXPECT_TRUE(trace.contains("XML body refused: elements nest deeper than 32"));
    }
    // A closing tag outside every element is an unknown node to the parser:
    // it buys no depth.
    std::string strays;
    for (int i = 0; i < 100; ++i)
        strays += "</x>";
    EXPECT_FALSE(xmlGuard::check(strays + nested(xmlGuard::kMaxDepth + 1)));
    EXPECT_TRUE(xmlGuard::check(strays + nested(xmlGuard::kMaxDepth)));
    // Inside an element the parser stops at the first closing tag that does
    // not match: what follows it is never descended into.
    xmlDocumentRecord record;
    EXPECT_FALSE(handler().parse(wrap(strays + nested(xmlGuard::kMaxDepth)), record));
    // Unknown nodes and empty elements hold no children.
    std::string unknown = "<a>";
    for (int i = 0; i < 100; ++i)
        unknown += "< b><1><c/><?p?>";
    EXPECT_TRUE(xmlGuard::check(unknown + "</a>"));
    // Names that begin with '_' or a byte above ASCII open elements.
    EXPECT_FALSE(xmlGuard::check(nested(xmlGuard::kMaxDepth + 1, "_")));
    EXPECT_FALSE(xmlGuard::check(nested(xmlGuard::kMaxDepth + 1, "\xC3\xA9")));
}

TEST(xmlHandlerTest, TheGuardTakesABodyOfTheLargestSizeAndNoByteMore)
{
    const std::string shell = "<a></a>";
    const std::string largest = "<a>" + std::string(xmlGuard::kMaxDocumentBytes - shell.size(), 'x') + "</a>";
    ASSERT_EQ(largest.size(), xmlGuard::kMaxDocumentBytes);
    EXPECT_TRUE(xmlGuard::check(largest));
    traceCapture trace;
    EXPECT_FALSE(xmlGuard::check(largest + " "));
    EXPECT_TRUE(trace.contains("XML body refused: 1048577 bytes, more than 1048576"));
}

// levels structs, each inside the one before, around one attribute.
std::string deepStruct(int levels)
{
    std::string text;
    for (int i = 0; i < levels; ++i)
        text += "<struct name=\"s" + std::to_string(i) + "\">";
    text += "<attr name=\"a\" type=\"S32\" value=\"1\"/>";
    for (int i = 0; i < levels; ++i)
        text += "</struct>";
    return text;
}

// Bodies are parsed in processes, on fiber stacks: the largest and the
// deepest body the guard lets through must fit the smallest stack a process
// can have (an overflow hits the stack's guard page and kills the test).
TEST(xmlHandlerTest, TheDeepestAndTheLargestAcceptedBodiesFitTheSmallestProcessStack)
{
    const int structLevels = xmlGuard::kMaxDepth - 2; // below mim and class
    const std::string deepest = wrap(deepStruct(structLevels));
    std::string widest;
    for (int i = 0; widest.size() + 64 < xmlGuard::kMaxDocumentBytes - 64; ++i)
        widest += "<attr name=\"a" + std::to_string(i) + "\" type=\"S32\" value=\"" + std::to_string(i) + "\"/>";
    widest = wrap(widest);
    ASSERT_LE(widest.size(), xmlGuard::kMaxDocumentBytes);

    std::size_t deepTreeSize = 0;
    std::size_t widestAttributes = 0;
    std::size_t widestRebuilt = 0;
    ose::World world;
    ose::ProcessSpec reader;
    reader.name = "reader";
    reader.stackSize = 0; // the smallest stack
    reader.entry = [&] {
        xmlDocumentRecord record;
        if (handler().parse(deepest, record) && record.values.size() == 1) {
            const xmlTree tree(record.names[0], record.types[0], record.values[0]);
            if (!tree.failed()) deepTreeSize = tree.toString().size();
        }
        xmlDocumentRecord wide;
        if (handler().parse(widest, wide)) {
            widestAttributes = wide.names.size();
            std::string text;
            if (handler().build(wide.ldn, wide.version, wide.names, wide.types, wide.values, text))
                widestRebuilt = text.size();
        }
    };
    world.start(world.createProcess(world.defaultNode(), reader));
    world.runUntilIdle();

    EXPECT_GT(deepTreeSize, deepStruct(structLevels).size() - 100);
    EXPECT_GT(widestAttributes, 20000u);
    EXPECT_GT(widestRebuilt, widest.size() / 2);
    EXPECT_FALSE(xmlGuard::check(wrap(deepStruct(structLevels + 1))));
}

TEST(xmlHandlerTest, BuildRefusesValuesThatWouldChangeTheDocument)
{
    std::string text;
    EXPECT_FALSE(handler().build("A=1", "1.0", {"a", "b"}, {"S32"}, {"1", "2"}, text));
    EXPECT_FALSE(handler().build("A=1", "1.0", {"a"}, {"STRING"}, {"x\" evil=\"1"}, text));
    EXPECT_FALSE(handler().build("A=1\"", "1.0", {"a"}, {"STRING"}, {"x"}, text));
    EXPECT_FALSE(handler().build("A=1", "1.0", {"a"}, {"struct"}, {"<struct></struct><attr/>"}, text));
    EXPECT_FALSE(handler().build("A=1", "1.0", {"a"}, {"struct"}, {"<array></array>"}, text));
    EXPECT_FALSE(handler().build("A=1", "1.0", {"a"}, {"bool"}, {"1"}, text));
    EXPECT_TRUE(handler().build("A=1", "1.0", {"a"}, {"STRING"}, {"&amp;&#x263A;ü"}, text));
}

} // namespace
