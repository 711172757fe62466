// The schema against the document that the tool prints.
#include "cli/ValidateSchema.h"

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/ValidateNames.h"
#include "sdk/camera/ConfigurationDocument.h"
#include "support/BuildPaths.h"
#include "support/TestFiles.h"

namespace {

/// What stands between `before` and the next of `ends`, for each time that `before` is there.
std::vector<std::string> textsBehind(const std::string& text, const std::string& before,
                                     const std::string& ends) {
    std::vector<std::string> found;
    for (std::size_t at = text.find(before); at != std::string::npos; at = text.find(before, at)) {
        at += before.size();
        found.push_back(text.substr(at, text.find_first_of(ends, at) - at));
    }
    return found;
}

using thermika::cli::ImagerSchema;
using thermika::cli::SchemaElement;

TEST(ValidateSchema, isTheInstalledFile) {
    EXPECT_EQ(thermika::cli::imagerSchemaText(),
              thermika_test::readFile(THERMIKA_SHARE "/imager.xsd"));
}

TEST(ValidateSchema, knowsEveryElementOfThePrintedDocumentAndNoOther) {
    std::size_t count = 0;
    for (const std::string& name : textsBehind(dax::ConfigurationDocument().text(), "<", " >")) {
        if (name.find_first_of("/!?") == 0) continue;
        EXPECT_NE(ImagerSchema::instance().find(name), nullptr) << name;
        ++count;
    }
    EXPECT_EQ(count, ImagerSchema::instance().elements().size());
}

TEST(ValidateSchema, hasTheDefaultsThatThePrintedDocumentHas) {
    const std::string document = dax::ConfigurationDocument().text();
    const std::string schema(thermika::cli::imagerSchemaText());
    std::size_t count = 0;
    for (const std::string& element : textsBehind(schema, "<xs:element name=\"", ">")) {
        const std::size_t at = element.find("default=\"");
        if (at == std::string::npos) continue;
        const std::string name = element.substr(0, element.find('"'));
        const std::string value = textsBehind(element, "default=\"", "\"").at(0);
        EXPECT_NE(document.find("<" + name + ">" + value + "</" + name + ">"), std::string::npos)
            << name;
        ++count;
    }
    EXPECT_EQ(count, 13U);
}

TEST(ValidateSchema, describesEveryElementInWords) {
    for (const SchemaElement& element : ImagerSchema::instance().elements())
        EXPECT_GT(element.words.size(), 10U) << element.name;
}

TEST(ValidateSchema, placesElementsInTheirContainers) {
    const ImagerSchema& schema = ImagerSchema::instance();
    ASSERT_NE(schema.find("mininterval"), nullptr);
    EXPECT_EQ(schema.find("mininterval")->parent, "autoflag");
    EXPECT_EQ(schema.find("imager")->parent, "");
    EXPECT_TRUE(schema.find("autoflag")->isContainer);
    EXPECT_FALSE(schema.find("focus")->isContainer);
    EXPECT_TRUE(schema.find("serial")->isRequired);
    EXPECT_FALSE(schema.find("focus")->isRequired);
    EXPECT_EQ(schema.find("colour"), nullptr);
}

TEST(ValidateNames, findsTheNameThatWasMeant) {
    const auto& elements = ImagerSchema::instance().elements();
    EXPECT_EQ(thermika::cli::nearestName("framrate", elements), "framerate");
    EXPECT_EQ(thermika::cli::nearestName("Focus", elements), "focus");
    EXPECT_EQ(thermika::cli::nearestName("mx", elements), "max");
    // The first of several that are as near.
    EXPECT_EQ(thermika::cli::nearestName(
                  "mix", {{"min", "", "", false, false}, {"max", "", "", false, false}}),
              "min");
    EXPECT_EQ(thermika::cli::nearestName("colour", elements), "");
    EXPECT_EQ(thermika::cli::nearestName("", elements), "");
    EXPECT_EQ(thermika::cli::nearestName(std::string(65, 'x'), elements), "");
}

}  // namespace
