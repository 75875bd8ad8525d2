// edit: builds a small document with the C++ layer, edits it (appends,
// sets an attribute, removes a node) and writes it out as UTF-8.
#include <cstdio>
#include <string>
#include <string_view>

#include "vrkxml.hpp"

namespace {

// The first failure of a chain of calls stays in the record; checked once
// at the end of each step.
struct Editor {
    vrkDOMException exception{};

    vrkNode *element(std::u16string_view name) {
        return vrkDOM_createEANode(ELEMENT_NODE, vrkxml::unitsOf(name), vrkxml::unitCount(name),
                                   &exception);
    }
    vrkNode *text(std::u16string_view value) {
        return vrkDOM_createTextNode(vrkxml::unitsOf(value), vrkxml::unitCount(value), &exception);
    }
    // Appends child to parent; a child that could not be placed is destroyed.
    vrkNode *append(vrkNode *parent, vrkNode *child) {
        if (child != nullptr && vrkNode_appendChild(parent, child, &exception) == nullptr) {
            vrkDOM_destroyNode(child, 1);
            return nullptr;
        }
        return child;
    }
    void setAttribute(vrkNode *element, std::u16string_view name, std::u16string_view value) {
        vrkNode *attribute = vrkDOM_createEANode(ATTRIBUTE_NODE, vrkxml::unitsOf(name),
                                                 vrkxml::unitCount(name), &exception);
        if (attribute == nullptr) {
            return;
        }
        vrkNode_setNodeValue(attribute, vrkxml::unitsOf(value), vrkxml::unitCount(value),
                             &exception);
        vrkNode *replaced = vrkElement_setAttributeNode(element, attribute, &exception);
        if (exception.code != 0) {
            vrkDOM_destroyNode(attribute, 1);
        }
        vrkDOM_destroyNode(replaced, 1);  // null when the name was new
    }
    bool failed(const char *step) const {
        if (exception.code == 0) {
            return false;
        }
        std::fprintf(stderr, "edit: %s failed with code %d\n", step, static_cast<int>(exception.code));
        return true;
    }
};

// The text inside an element, joined from its text children (the parser
// gives a reference a text node of its own).
std::u16string textOf(const vrkNode *element) {
    std::u16string text;
    for (vrkNode *child : vrkxml::children(element)) {
        if (child->type == TEXT_NODE || child->type == CDATA_SECTION_NODE) {
            text += vrkxml::value(child);
        }
    }
    return text;
}

}  // namespace

int main() {
    auto created = vrkxml::Document::create();
    if (!created) {
        std::fprintf(stderr, "edit: %s\n", created.error().message.c_str());
        return 1;
    }
    vrkxml::Document doc = std::move(created).value();
    Editor edit;

    // Build: <todo><item>Write the report</item><item>Buy caf\u00E9</item>
    //        <item>Old entry</item></todo>
    vrkNode *todo = edit.append(doc.node(), edit.element(u"todo"));
    for (std::u16string_view entry : {u"Write the report", u"Buy caf\u00E9", u"Old entry"}) {
        vrkNode *item = edit.append(todo, edit.element(u"item"));
        edit.append(item, edit.text(entry));
    }
    if (edit.failed("building")) {
        return 1;
    }

    // Edit: mark the first item done, add one more, drop the old one.
    edit.setAttribute(todo, u"owner", u"me");
    for (vrkNode *item : vrkxml::children(todo)) {
        if (vrkxml::value(item->firstChild) == u"Write the report") {
            edit.setAttribute(item, u"done", u"yes");
        }
    }
    vrkNode *added = edit.append(todo, edit.element(u"item"));
    edit.append(added, edit.text(u"Call <Ann> & Bob"));
    for (vrkNode *item : vrkxml::children(todo)) {
        if (vrkxml::value(item->firstChild) == u"Old entry") {
            vrkDOM_destroyNode(vrkNode_removeChild(todo, item, &edit.exception), 1);
            break;  // the walk must not go on from a destroyed node
        }
    }
    if (edit.failed("editing")) {
        return 1;
    }

    // Write it out, and read it back to show the remaining items.
    auto out = vrkxml::serialize(doc.node(), vrkxml::Encoding::utf8);
    if (!out) {
        std::fprintf(stderr, "edit: %s\n", out.error().message.c_str());
        return 1;
    }
    std::fwrite(out.value().data(), 1, out.value().size(), stdout);

    auto again = vrkxml::parse(out.value());
    if (!again) {
        const vrkxml::Error &error = again.error();
        std::fprintf(stderr, "edit: reparse failed at %lld:%lld: %s\n",
                     static_cast<long long>(error.line), static_cast<long long>(error.column),
                     error.message.c_str());
        return 1;
    }
    int count = 0;
    for (vrkNode *item : vrkxml::children(again.value().root())) {
        std::string attrs;
        for (vrkNode *attribute : vrkxml::attributes(item)) {
            attrs += ' ';
            attrs += vrkxml::toUtf8(vrkxml::name(attribute));
            attrs += '=';
            attrs += vrkxml::toUtf8(vrkxml::value(attribute));
        }
        std::printf("item %d:%s %s\n", ++count, attrs.c_str(),
                    vrkxml::toUtf8(textOf(item)).c_str());
    }
    return count == 3 ? 0 : 1;
}
