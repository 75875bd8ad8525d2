#include "support/document_generator.h"

#include <algorithm>

namespace vrktest {

namespace {

using Atoms = std::vector<std::u16string>;
const Atoms kNames = {u"a", u"item", u"x.y", u"_n-1", u"\u00E9l\u00E9ment", u"\u4E2D", u"b2"};
const Atoms kPrefixes = {u"p", u"q", u"ns1", u"\u00E9"};
const Atoms kUris = {u"urn:a", u"http://example.org/n", u"urn:x&amp;y", u"&#x75;rn", u""};
const Atoms kText = {u"text",          u" ",           u"\n", u"\t", u"\r\n", u"]x", u">", u"'\"",
                     u"\u00E9t\u00E9", u"\u4E2D\u6587"};
const Atoms kReferences = {u"&lt;",     u"&gt;",  u"&amp;", u"&apos;", u"&quot;", u"&#65;",
                           u"&#x4E2D;", u"&#60;", u"&#38;", u"&#9;",   u"&#13;",  u"&#xA;"};
const Atoms kCData = {u"<b>", u"&amp;", u"]]", u"x y", u"\u00E9", u"]", u"\n"};
const Atoms kPIData = {u"data", u"a?b", u"<&>", u"'\"", u"\u00E9", u"?", u" "};
const Atoms kComment = {u" note ", u"-x", u"<&>", u"\u00E9"};
const Atoms kSpace = {u" ", u"\n", u"\t", u"\r\n  "};

}  // namespace

std::u16string DocumentGenerator::document(bool utf16) {
    std::u16string out;
    if (random_.chance(40)) {
        const std::u16string q = random_.chance(50) ? u"'" : u"\"";
        out += u"<?xml version=" + q + u"1.0" + q;
        if (random_.chance(50)) out += u" encoding=" + q + (utf16 ? u"UTF-16" : u"utf-8") + q;
        if (random_.chance(30)) out += u" standalone=" + q + u"yes" + q;
        out += random_.chance(50) ? u"?>" : u" ?>";
    }
    misc(out);
    maxDepth_ = 1 + random_.below(8);
    element(out, 0);
    misc(out);
    return out;
}

std::u16string DocumentGenerator::run(const Atoms &atoms, uint32_t most) {
    std::u16string out;
    for (uint32_t n = 1 + random_.below(most); n > 0; --n) {
        out += wide_ && random_.chance(5) ? u"\U0001D11E" : random_.pick(atoms);
    }
    return out;
}

// A target of xml and more is the declaration only at the very start.
std::u16string DocumentGenerator::pi(bool inContent) {
    const std::u16string target =
        inContent && random_.chance(10) ? u"xml-ish" : random_.pick(kNames);
    if (random_.chance(30)) return u"<?" + target + u"?>";
    const std::u16string data = run(kPIData, 4);
    // White space ahead of the data is not kept: the data never begins with it.
    const std::u16string lead = data[0] == u' ' ? u"d" : u"";
    return u"<?" + target + random_.pick(kSpace) + lead + data + u"?>";
}

void DocumentGenerator::misc(std::u16string &out) {
    for (uint32_t n = random_.below(4); n > 0; --n) {
        switch (random_.below(3)) {
        case 0: out += u"<!--" + run(kComment, 3) + u"-->"; break;
        case 1: out += pi(false); break;
        default: out += random_.pick(kSpace);
        }
    }
}

std::u16string DocumentGenerator::value(char16_t quote) {
    std::u16string out;
    for (uint32_t n = random_.below(5); n > 0; --n) {
        const std::u16string atom = random_.chance(30) ? random_.pick(kReferences) : run(kText, 1);
        if (atom.find(quote) == std::u16string::npos) out += atom;
    }
    return out;
}

std::u16string DocumentGenerator::qualified() {
    if (inScope_.empty() || random_.chance(50)) return random_.pick(kNames);
    return random_.pick(inScope_) + u":" + random_.pick(kNames);
}

void DocumentGenerator::element(std::u16string &out, uint32_t depth) {
    const std::size_t scope = inScope_.size();
    Atoms names;  // xmlns declarations, then other attributes, all distinct
    if (random_.chance(20)) names.push_back(u"xmlns");
    for (uint32_t n = random_.below(3); n > 0; --n) {
        const std::u16string prefix = random_.pick(kPrefixes);
        const auto declared = inScope_.begin() + static_cast<std::ptrdiff_t>(scope);
        if (std::find(declared, inScope_.end(), prefix) != inScope_.end()) continue;
        names.push_back(u"xmlns:" + prefix);
        inScope_.push_back(prefix);
    }
    const std::u16string name = qualified();
    for (uint32_t n = random_.below(4); n > 0; --n) {
        const std::u16string attribute = random_.chance(10) ? u"xml:lang" : qualified();
        if (std::find(names.begin(), names.end(), attribute) == names.end())
            names.push_back(attribute);
    }
    for (std::size_t i = names.size(); i > 1; --i) {  // declarations anywhere in the tag
        std::swap(names[i - 1], names[random_.below(i)]);
    }
    out += u"<" + name;
    for (const std::u16string &attribute : names) {
        const char16_t quote = random_.chance(50) ? u'\'' : u'"';
        out += random_.pick(kSpace) + attribute + (random_.chance(80) ? u"=" : u" = ") + quote;
        out += (attribute.starts_with(u"xmlns") ? random_.pick(kUris) : value(quote)) + quote;
    }
    if (random_.chance(20)) out += random_.pick(kSpace);
    if (random_.chance(15)) {
        out += u"/>";
        inScope_.resize(scope);
        return;
    }
    out += u">";
    for (uint32_t n = random_.below(depth < 2 ? 9 : 5); n > 0; --n) {
        switch (random_.below(9)) {
        case 0: out += run(kText, 4); break;
        case 1: out += random_.pick(kReferences); break;
        case 2: out += u"<![CDATA[" + (random_.chance(20) ? u"" : run(kCData, 4)) + u"]]>"; break;
        case 3: out += pi(true); break;
        case 4: out += u"<!--" + run(kComment, 3) + u"-->"; break;
        default:
            if (depth + 1 < maxDepth_) element(out, depth + 1);
        }
    }
    out += u"</" + name + (random_.chance(20) ? u" >" : u">");
    inScope_.resize(scope);
}

}  // namespace vrktest
