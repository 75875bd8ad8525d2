// Round trip over generated documents: parse, write in both encodings, parse
// what was written, and find the same tree and the same bytes again.
#include <algorithm>
#include <vector>

#include "dom_test.h"
#include "support/random.h"
#include "support/serialize_helpers.h"

using namespace domtest;

namespace {

using Atoms = std::vector<std::u16string>;
const Atoms kNames = {u"a", u"item", u"x.y", u"_n-1", u"\u00E9l\u00E9ment", u"\u4E2D", u"b2"};
const Atoms kPrefixes = {u"p", u"q", u"ns1", u"\u00E9"};
const Atoms kUris = {u"urn:a", u"http://example.org/n", u"urn:x&amp;y", u""};
const Atoms kText = {u"text", u" ", u"\n", u"\t", u"\r\n", u"]x", u">", u"'\"", u"\u00E9t\u00E9", u"\u4E2D\u6587"};
const Atoms kReferences = {u"&lt;", u"&gt;", u"&amp;", u"&apos;", u"&quot;", u"&#65;",
                           u"&#x4E2D;", u"&#60;", u"&#38;", u"&#9;", u"&#13;", u"&#xA;"};
const Atoms kCData = {u"<b>", u"&amp;", u"]]", u"x y", u"\u00E9", u"]", u"\n"};
const Atoms kPIData = {u"data", u"a?b", u"<&>", u"'\"", u"\u00E9", u"?", u" "};
const Atoms kComment = {u" note ", u"-x", u"<&>", u"\u00E9"};
const Atoms kSpace = {u" ", u"\n", u"\t", u"\r\n  "};

// Well-formed documents of many shapes, the same on every run.  With `wide`,
// characters beyond 16 bits stand in text and values.
class Generator : private Random {
public:
    Generator(uint64_t seed, bool wide) : Random(seed), wide_(wide) {}
    std::u16string document(bool utf16) {
        std::u16string out;
        if (chance(40)) {
            const std::u16string q = chance(50) ? u"'" : u"\"";
            out += u"<?xml version=" + q + u"1.0" + q;
            if (chance(50)) out += u" encoding=" + q + (utf16 ? u"UTF-16" : u"utf-8") + q;
            if (chance(30)) out += u" standalone=" + q + u"yes" + q;
            out += chance(50) ? u"?>" : u" ?>";
        }
        misc(out), maxDepth_ = 1 + below(8), element(out, 0), misc(out);
        return out;
    }

private:
    std::u16string run(const Atoms &atoms, uint32_t most, std::u16string out = u"") {
        for (uint32_t n = 1 + below(most); n > 0; --n) out += wide_ && chance(5) ? u"\U0001D11E" : pick(atoms);
        return out;
    }
    std::u16string pi(bool inContent) {  // a target of xml and more is the declaration at the very start
        const std::u16string target = inContent && chance(10) ? u"xml-ish" : pick(kNames);
        if (chance(30)) return u"<?" + target + u"?>";
        const std::u16string data = run(kPIData, 4);  // white space ahead of data is not kept
        return u"<?" + target + pick(kSpace) + (data[0] == u' ' ? u"d" : u"") + data + u"?>";
    }
    void misc(std::u16string &out) {
        for (uint32_t n = below(4); n > 0; --n) {
            const uint32_t kind = below(3);
            out += kind == 0 ? u"<!--" + run(kComment, 3) + u"-->" : kind == 1 ? pi(false) : pick(kSpace);
        }
    }
    std::u16string value(char16_t quote, std::u16string out = u"") {
        for (uint32_t n = below(5); n > 0; --n) {
            const std::u16string atom = chance(30) ? pick(kReferences) : run(kText, 1);
            if (atom.find(quote) == std::u16string::npos) out += atom;
        }
        return out;
    }
    std::u16string qualified() { return inScope_.empty() || chance(50) ? pick(kNames) : pick(inScope_) + u":" + pick(kNames); }
    void element(std::u16string &out, uint32_t depth) {
        const std::size_t scope = inScope_.size();
        Atoms names;  // xmlns declarations, then other attributes, all distinct
        if (chance(20)) names.push_back(u"xmlns");
        for (uint32_t n = below(3); n > 0; --n) {
            const std::u16string prefix = pick(kPrefixes);
            if (std::find(inScope_.begin() + static_cast<std::ptrdiff_t>(scope), inScope_.end(), prefix) != inScope_.end()) continue;
            names.push_back(u"xmlns:" + prefix), inScope_.push_back(prefix);
        }
        const std::u16string name = qualified();
        for (uint32_t n = below(4); n > 0; --n) {
            const std::u16string attribute = chance(10) ? u"xml:lang" : qualified();
            if (std::find(names.begin(), names.end(), attribute) == names.end()) names.push_back(attribute);
        }
        for (std::size_t i = names.size(); i > 1; --i) std::swap(names[i - 1], names[below(i)]);  // declarations anywhere
        out += u"<" + name;
        for (const std::u16string &attribute : names) {
            const char16_t quote = chance(50) ? u'\'' : u'"';
            out += pick(kSpace) + attribute + (chance(80) ? u"=" : u" = ") + quote;
            out += (attribute.starts_with(u"xmlns") ? pick(kUris) : value(quote)) + quote;
        }
        if (chance(20)) out += pick(kSpace);
        if (chance(15)) return out += u"/>", inScope_.resize(scope);
        out += u">";
        for (uint32_t n = below(depth < 2 ? 9 : 5); n > 0; --n) {
            switch (below(9)) {
            case 0: out += run(kText, 4); break;
            case 1: out += pick(kReferences); break;
            case 2: out += u"<![CDATA[" + (chance(20) ? u"" : run(kCData, 4)) + u"]]>"; break;
            case 3: out += pi(true); break;
            case 4: out += u"<!--" + run(kComment, 3) + u"-->"; break;
            default: if (depth + 1 < maxDepth_) element(out, depth + 1);
            }
        }
        out += u"</" + name + (chance(20) ? u" >" : u">");
        inScope_.resize(scope);
    }
    bool wide_;
    uint32_t maxDepth_ = 1;
    Atoms inScope_;
};

// A reference comes back as plain text, which then joins its neighbours.
void joinText(vrkNode *document, vrkDOMException e = {}) { ASSERT_EQ(vrkNodeReal_normalize(kCaller, 0, document, &e), 1); }

}  // namespace

TEST(RoundTrip, GeneratedDocumentsComeBackUnchanged) {
    for (int i = 0; i < 300; ++i) {
        const bool utf16 = i % 3 != 0;
        const std::u16string text = Generator(static_cast<uint64_t>(i), utf16 && i % 4 == 1).document(utf16);
        const std::string text8 = utf8(units(text).data());
        SCOPED_TRACE("document " + std::to_string(i) + ": " + text8);
        const Utf16Options options{i % 3 == 2 ? Utf16Form::Swapped : Utf16Form::Native, i % 3 == 2 || i % 5 == 0, i % 7 == 0};
        Parsed first = utf16 ? parseUtf16(text, options) : parseUtf8((i % 4 == 0 ? "\xEF\xBB\xBF" : "") + text8);
        ASSERT_NE(first.document, nullptr) << "error " << first.error.code << " at " << first.error.offset;
        const std::string out8 = serialized(first.document.get(), ENCODING_UTF8);
        const std::string out16 = serialized(first.document.get(), ENCODING_UTF16);
        const std::u16string units16 = unitsOf(out16);
        EXPECT_EQ(out8.substr(39), utf8(units(units16.substr(40)).data()));  // the same text behind the two headers
        // Judged by the tree, not by `text`: a comment may have held the pair.
        const bool wide = std::any_of(units16.begin(), units16.end(), [](char16_t c) { return c >= 0xD800 && c <= 0xDFFF; });
        joinText(first.document.get());
        for (const int32_t encoding : {ENCODING_UTF8, ENCODING_UTF16}) {
            const std::string &out = encoding == ENCODING_UTF8 ? out8 : out16;
            Parsed second = encoding == ENCODING_UTF8 ? parseUtf8(out) : parseUtf16(unitsOf(out));
            if (encoding == ENCODING_UTF8 && wide) {
                EXPECT_EQ(second.error.code, ERR_ENCODING_DECL);  // each half of a pair written on its own
                continue;
            }
            ASSERT_NE(second.document, nullptr) << encoding << ": error " << second.error.code << " at " << second.error.offset;
            EXPECT_TRUE(serialized(second.document.get(), encoding) == out) << "encoding " << encoding;
            joinText(second.document.get());
            EXPECT_EQ(describe(second.document.get()), describe(first.document.get())) << "encoding " << encoding;
            EXPECT_EQ(namespaceFields(second.document.get()), namespaceFields(first.document.get()));
        }
    }
}
