// What the parser keeps beside the grammar for large inputs (a set of the
// attribute names of a tag, answers remembered on the namespace stack) must
// never change a result: checked against plain models on generated input.
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/outcome.h"
#include "support/parse_helpers.h"
#include "support/random.h"
#include "support/tree_text.h"

using namespace vrktest;

TEST(Scale, ManyAttributesKeepTheirOrderAndDuplicatesAreFound) {
    Random random(7);
    for (int round = 0; round < 20; ++round) {
        const int count = 1 + static_cast<int>(random.below(2000));
        std::string tag = "<e";
        std::string expected = "#document[e(";
        std::vector<std::size_t> ends;  // offset behind each value's closing quote
        for (int i = 0; i < count; ++i) {
            // Names in no sorted order, so that the set is exercised in depth.
            const std::string name = "a" + std::to_string((i * 7919) % 10007);
            tag += " " + name + "='" + std::to_string(i) + "'";
            ends.push_back(tag.size());
            expected += (i == 0 ? "" : " ") + name + "=\"" + std::to_string(i) + "\"";
        }
        EXPECT_EQ(outcome(tag + "/>"), expected + ")]");
        // The same tag with one earlier name repeated at its end.
        const int repeated = static_cast<int>(random.below(static_cast<std::size_t>(count)));
        const std::string twice = tag + " a" + std::to_string((repeated * 7919) % 10007) + "='x'";
        EXPECT_EQ(outcome(twice + "/>"), errorAt(ERR_DUPLICATE_ATTRIBUTE, static_cast<int32_t>(twice.size())));
    }
}

TEST(Scale, NamespaceLookupsMatchTheNearestDeclaration) {
    // Random nesting in which six prefixes and the default are declared and
    // used at random: each element's namespace name must be that of the
    // nearest declaration, which the model keeps as a stack of scopes.
    Random random(11);
    for (int round = 0; round < 30; ++round) {
        std::string text;
        std::string modelled;  // "{uri}" of each element in document order
        std::vector<std::map<std::string, std::string>> scopes{{}};
        std::vector<std::string> open;
        for (int made = 0; made < 300 && (made == 0 || !open.empty());) {
            if (!open.empty() && (random.chance(40) || open.size() > 80)) {
                text += "</" + open.back() + ">";
                open.pop_back();
                scopes.pop_back();
                continue;
            }
            std::map<std::string, std::string> scope = scopes.back();
            std::string declarations;
            for (int d = static_cast<int>(random.below(3)); d > 0; --d) {
                const std::string prefix = random.chance(20) ? "" : "p" + std::to_string(random.below(6));
                const std::string attribute = prefix.empty() ? "xmlns" : "xmlns:" + prefix;
                if (declarations.find(" " + attribute + "=") != std::string::npos) continue;
                const std::string uri = "u" + std::to_string(made) + "_" + std::to_string(d);
                declarations += " " + attribute + "='" + uri + "'";
                scope[prefix] = uri;
            }
            std::vector<std::string> usable{""};
            for (const auto &entry : scope) {
                if (!entry.first.empty()) usable.push_back(entry.first);
            }
            const std::string prefix = random.pick(usable);
            const std::string name = prefix.empty() ? "e" : prefix + ":e";
            modelled += "{" + (scope.count(prefix) != 0 ? scope[prefix] : std::string("(null)")) + "}";
            text += "<" + name + declarations + ">";
            open.push_back(name);
            scopes.push_back(scope);
            ++made;
        }
        while (!open.empty()) text += "</" + open.back() + ">", open.pop_back();

        Parsed parsed = parseUtf8(text);
        ASSERT_NE(parsed.document, nullptr) << text;
        std::string actual;
        for (const vrkNode *node = parsed.document->firstChild; node != nullptr;) {
            actual += "{" + utf8(node->namespaceURI) + "}";
            if (node->firstChild != nullptr) {
                node = node->firstChild;
                continue;
            }
            while (node != nullptr && node->next == nullptr) node = node->parent;
            if (node != nullptr) node = node->next;
        }
        EXPECT_EQ(actual, modelled) << text;
    }
}
