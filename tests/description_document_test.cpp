/// The XML description of the whole applet, read back with an XML library.

#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <memory>
#include <set>

#include "tables/Catalogue.h"
#include "tests/AppletFixture.h"

namespace marovine::test {
namespace {

std::string documentOf(OpenApplet& applet) {
    std::size_t size = 0;
    EXPECT_EQ(0, Fg_getParameterInfoXML(applet.record(), 0, nullptr, &size));
    std::string document(size, '\0');
    EXPECT_EQ(0, Fg_getParameterInfoXML(applet.record(), 0, document.data(), &size));
    EXPECT_EQ(document.size(), size);
    EXPECT_EQ('\0', document.back());
    document.pop_back();
    return document;
}

/// A parsed document that answers XPath questions; "g" is the prefix of the description's namespace.
class Parsed {
 public:
    explicit Parsed(const std::string& text)
        : document_(xmlReadMemory(text.data(), static_cast<int>(text.size()), "description.xml", nullptr,
                                  XML_PARSE_NONET),
                    &xmlFreeDoc) {
        EXPECT_NE(nullptr, document_) << "not well-formed";
    }

    std::vector<std::string> texts(const std::string& path) const {
        const std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
            xmlXPathNewContext(document_.get()), &xmlXPathFreeContext);
        xmlXPathRegisterNs(context.get(), BAD_CAST "g", BAD_CAST "http://www.genicam.org/GenApi/Version_1_0");
        const std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> result(
            xmlXPathEvalExpression(BAD_CAST path.c_str(), context.get()), &xmlXPathFreeObject);
        std::vector<std::string> found;
        if (result == nullptr || result->nodesetval == nullptr) return found;
        for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
            xmlChar* content = xmlNodeGetContent(result->nodesetval->nodeTab[i]);
            found.emplace_back(reinterpret_cast<const char*>(content));
            xmlFree(content);
        }
        return found;
    }

 private:
    std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document_;
};

TEST_F(AppletTest, DescribesEachParameterOfTheDescribedKindsOnce) {
    const Parsed document(documentOf(applet));
    std::multiset<std::string> features;
    for (const char* kind : {"Integer", "Float", "Enumeration", "StringReg"})
        for (const auto& name : document.texts("//g:" + std::string(kind) + "/@Name")) features.insert(name);
    std::size_t described = 0;
    for (const auto index : catalogue) {
        const auto& row = rowOf(index);
        const bool wide = std::holds_alternative<Limits<std::uint64_t>>(row.range) ||
                          std::holds_alternative<Limits<std::int64_t>>(row.range) ||
                          std::holds_alternative<FieldLimits>(row.range);
        EXPECT_EQ(wide ? 0u : 1u, features.count(row.name)) << row.name;
        described += wide ? 0 : 1;
    }
    EXPECT_EQ(described, features.size());
}

TEST_F(AppletTest, DescribesTheRangesAsTheyAreNow) {
    EXPECT_THAT(Parsed(documentOf(applet)).texts("//g:Integer[@Name='FG_XOFFSET']/g:Max"),
                testing::ElementsAre("15360"));
    ASSERT_EQ(0, applet.set("FG_WIDTH", 2048u));
    const Parsed document(documentOf(applet));
    EXPECT_THAT(document.texts("//g:Integer[@Name='FG_XOFFSET']/g:Max"), testing::ElementsAre("14336"));
    EXPECT_THAT(document.texts("//g:Integer[@Name='FG_DIGIO_OUTPUT']/g:Min"), testing::ElementsAre("-1"));
    EXPECT_THAT(document.texts("//g:IntReg[@Name='FG_WIDTH_Reg']/g:Address"), testing::ElementsAre("100"));
    EXPECT_THAT(document.texts("//g:Enumeration[@Name='FG_CAMERASIMULATOR_PATTERN']/g:EnumEntry/@Name"),
                testing::ElementsAre("Horizontal", "Vertical", "Diagonal"));
    EXPECT_THAT(document.texts("//g:RegisterDescription/@ModelName"), testing::ElementsAre("Marovine"));
}

TEST_F(AppletTest, FillsOnlyABufferThatIsLargeEnough) {
    std::size_t size = 0;
    ASSERT_EQ(0, Fg_getParameterInfoXML(applet.record(), 0, nullptr, &size));
    std::string buffer(size, '#');
    std::size_t given = size - 1;
    EXPECT_EQ(error::bufferTooSmall, Fg_getParameterInfoXML(applet.record(), 0, buffer.data(), &given));
    EXPECT_EQ(size - 1, given);
    EXPECT_EQ(std::string(size, '#'), buffer);
    given = 0;
    EXPECT_EQ(error::bufferTooSmall, Fg_getParameterInfoXML(applet.record(), 0, buffer.data(), &given));
    EXPECT_EQ(error::bufferTooSmall, applet.lastError());
    for (const int port : {1, -1}) {
        EXPECT_EQ(error::noDefinition, Fg_getParameterInfoXML(applet.record(), port, buffer.data(), &size));
        EXPECT_EQ(error::noDefinition, applet.lastError());
    }
}

TEST(DescriptionDocument, LeavesOutRegistersReachedDirectly) {
    setenv("TAVR_ENABLE_DRA", "1", 1);
    OpenApplet direct;
    unsetenv("TAVR_ENABLE_DRA");
    OpenApplet plain;
    EXPECT_EQ(documentOf(plain), documentOf(direct));
}

}  // namespace
}  // namespace marovine::test
