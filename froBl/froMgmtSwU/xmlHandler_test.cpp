#include "froBl/froMgmtSwU/export/xmlGuard.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"
#include "froBl/froMgmtSwU/testSupport/traceCapture.h"

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

    const std::string huge(xmlGuard::kMaxDocumentBytes, 'x');
    EXPECT_FALSE(handler().parse(wrap("<attr name=\"a\" type=\"STRING\" value=\"" + huge + "\"/>"), record));
    EXPECT_TRUE(trace.contains("XML body refused"));

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
