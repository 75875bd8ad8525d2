// Round trip over documents shaped like the ones people actually feed the
// library: a product catalogue, a configuration file, a drawing with two
// namespaces, prose with code samples, and the same shapes as UTF-16 in both
// byte orders, with and without a byte order mark.
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/random.h"
#include "support/serialize_helpers.h"
#include "support/parse_helpers.h"
#include "support/tree_text.h"
#include "support/unitext.h"

using namespace vrktest;

namespace {

using Atoms = std::vector<std::u16string>;
const Atoms kAscii = {u"steel", u"kettle", u"compact", u"garden", u"blue", u"server", u"portable",
                      u"classic", u"o'clock", u"light", u"value", u"(2 pack)", u"50%", u"x=y;"};
const Atoms kWide = {u"café", u"crème brûlée", u"naïve", u"Zürich", u"Ελληνικά", u"λόγος",
                     u"Αθήνα", u"日本語", u"東京", u"中文", u"文字化け", u"Ærø"};
const Atoms kReferences = {u"&amp;", u"&lt;", u"&gt;", u"&quot;", u"&apos;",
                           u"&#xE9;", u"&#233;", u"&#x3B1;", u"&#x4E2D;", u"&#169;"};
const Atoms kCode = {u"if (a < b && b > c) return &x;", u"std::vector<int> v{1, 2};",
                     u"<a href=\"?p=1&amp;q=2\">next</a>", u"x = y[z[0]] >> 2; // ]] alone",
                     u"printf(\"%d<%d\\n\", i, n);", u"<!-- not a comment here -->"};
const Atoms kColours = {u"#336699", u"#ff0000", u"none", u"currentColor", u"url(#grad0)"};

enum class Kind { Catalogue, Configuration, Drawing, Prose };
constexpr Kind kKinds[] = {Kind::Catalogue, Kind::Configuration, Kind::Drawing, Kind::Prose};
const char *const kKindNames[] = {"catalogue", "configuration", "drawing", "prose"};

// The same document for the same seed on every run (splitmix64).  `wide`
// mixes accented Latin, Greek and CJK words into the text.  Seeds 0 to 4
// (mod 5) scale from a few KB up to about 100 KB.
constexpr uint32_t kScale[] = {1, 3, 5, 8, 20};
class Generator : private Random {
public:
    Generator(uint64_t seed, bool wide) : Random(seed), wide_(wide), scale_(kScale[seed % 5]) {}

    std::u16string document(Kind kind, bool utf16) {
        // A stylesheet instruction first in the text is taken for a broken
        // declaration, so prose always has one ahead of it.
        if (kind == Kind::Configuration || kind == Kind::Prose || chance(60))
            out_ += u"<?xml version=\"1.0\" encoding=\"" + std::u16string(utf16 ? u"UTF-16" : u"UTF-8") + u"\"?>\n";
        if (kind == Kind::Catalogue) catalogue();
        if (kind == Kind::Configuration) configuration();
        if (kind == Kind::Drawing) drawing();
        if (kind == Kind::Prose) prose();
        return out_;
    }

private:
    static std::u16string num(uint32_t n) {
        const std::string digits = std::to_string(n);
        return std::u16string(digits.begin(), digits.end());
    }
    static std::u16string at(const std::u16string &name, const std::u16string &value) {
        return u" " + name + u"=\"" + value + u"\"";
    }
    std::u16string word() { return wide_ && chance(40) ? pick(kWide) : pick(kAscii); }
    // A phrase of up to `most` words, now and then with a reference in it.
    std::u16string words(uint32_t most) {
        std::u16string out = word();
        for (uint32_t n = below(most); n > 0; --n)
            out += (chance(15) ? u" " + pick(kReferences) + u" " : u" ") + word();
        return out;
    }
    // Text with inline elements, references and now and then a CDATA section.
    std::u16string mixed(uint32_t pieces) {
        std::u16string out = words(6);
        for (; pieces > 0; --pieces) {
            switch (below(6)) {
            case 0: out += u" <emphasis>" + words(3) + u"</emphasis> "; break;
            case 1: out += u" <code>" + pick(kReferences) + word() + u"</code>, "; break;
            case 2: out += u" (see <link" + at(u"href", u"#s" + num(below(9))) + u">" + words(2) + u"</link>)"; break;
            case 3: out += u" <![CDATA[" + pick(kCode) + u"]]> "; break;
            default: out += pick(kReferences) + words(8);
            }
        }
        return out + u".";
    }

    void catalogue() {
        out_ += u"<!-- Product catalogue, exported nightly -->\n<catalogue" +
                at(u"generated", u"2024-03-0" + num(1 + below(9))) + at(u"title", words(4)) + u">\n";
        for (uint32_t i = 0; i < 12 * scale_; ++i) {
            out_ += u"  <product" + at(u"id", u"p" + num(1000 + i)) + u" sku='AB-" + num(below(10000)) + u"'" +
                    (chance(20) ? at(u"discontinued", u"true") : u"") + u">\n    <name>" + words(4) + u"</name>\n";
            out_ += u"    <price" + at(u"currency", chance(50) ? u"EUR" : u"JPY") + u">" + num(below(900)) + u"." +
                    num(10 + below(90)) + u"</price>\n";
            if (chance(70)) out_ += u"    <description xml:lang=\"en\">" + words(20) + u"</description>\n";
            out_ += u"    <stock" + at(u"warehouse", words(2)) + at(u"count", num(below(500))) + u"/>\n";
            if (chance(50)) out_ += u"    <tags><tag>" + word() + u"</tag><tag>" + word() + u"</tag></tags>\n";
            out_ += u"  </product>\n";
        }
        out_ += u"</catalogue>\n<!-- end -->\n";
    }

    void configuration() {
        nl_ = chance(50) ? u"\r\n" : u"\n";
        out_ += u"<?app-config schema=\"3\" strict?>" + nl_ + u"<!-- Edit with care; read at start-up -->" + nl_ +
                u"<configuration xmlns:env=\"urn:example:environment\" env:profile=\"production\">" + nl_;
        for (uint32_t i = 0; i < 3 * scale_; ++i) section(1, u"  ");
        out_ += u"  <banner xml:space=\"preserve\">\t  " + words(6) + u"  \t</banner>" + nl_;
        out_ += u"</configuration>" + nl_;
    }
    void section(uint32_t depth, const std::u16string &indent) {
        out_ += indent + u"<section" + at(u"name", word()) + (chance(30) ? u" enabled='false'" : u"") + u">" + nl_;
        for (uint32_t n = 2 + below(6); n > 0; --n) {
            const std::u16string line = indent + u"  ";
            switch (below(8)) {
            case 0: out_ += line + u"<!-- " + words(6) + u" -->" + nl_; break;
            case 1: out_ += line + u"<?reload interval=\"" + num(below(120)) + u"\"?>" + nl_; break;
            case 2: if (depth < 4) section(depth + 1, line); break;
            case 3: out_ += line + u"<path env:only=\"test\">C:\\Data\\" + word() + u"</path>" + nl_; break;
            default:
                out_ += line + u"<setting" + at(u"key", word() + num(below(99))) + at(u"value", words(3)) + u"/>" + nl_;
            }
        }
        out_ += indent + u"</section>" + nl_;
    }

    void drawing() {
        out_ += u"<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"640\" "
                u"height=\"480\" viewBox=\"0 0 640 480\">\n  <title>" + words(5) + u"</title>\n  <metadata><rdf:RDF "
                u"xmlns:rdf=\"urn:example:rdf\" xmlns:dc=\"urn:example:dc\"><dc:creator>" + words(2) +
                u"</dc:creator></rdf:RDF></metadata>\n  <defs>\n    <linearGradient id=\"grad0\"><stop offset=\"0%\" "
                u"stop-color=\"#fff\"/><stop offset=\"100%\" stop-color=\"#036\"/></linearGradient>\n"
                u"    <path id=\"shape0\" d=\"M 0 0 L 10 0 L 5 8 Z\"/>\n  </defs>\n";
        for (uint32_t g = 0; g < 2 * scale_; ++g) {
            // Every third layer binds the link namespace to another prefix.
            const std::u16string link = g % 3 == 2 ? u"l" : u"xlink";
            out_ += u"  <g" + at(u"id", u"layer" + num(g)) +
                    at(u"transform", u"translate(" + num(below(600)) + u"," + num(below(400)) + u")") +
                    at(u"fill", pick(kColours)) +
                    (link == u"l" ? at(u"xmlns:l", u"http://www.w3.org/1999/xlink") : u"") + u">\n";
            for (uint32_t n = 3 + below(6); n > 0; --n) {
                const std::u16string xy = at(u"x", num(below(640))) + at(u"y", num(below(480)));
                switch (below(5)) {
                case 0: out_ += u"    <rect" + xy + u" width=\"40\" height=\"20\" rx=\"3\"/>\n"; break;
                case 1:
                    out_ += u"    <circle" + at(u"cx", num(below(640))) + at(u"r", num(1 + below(50))) +
                            at(u"stroke", pick(kColours)) + u"/>\n";
                    break;
                case 2: out_ += u"    <use" + at(link + u":href", u"#shape0") + xy + u"/>\n"; break;
                case 3: out_ += u"    <path" + at(u"d", u"M 9 9 C 10 20, 30 40, 50 60 z") + xy + u"/>\n"; break;
                default:
                    out_ += u"    <a" + at(link + u":href", u"https://ex.org/?q=" + num(below(99)) + u"&amp;hl=en") +
                            at(link + u":title", words(3)) + u"><text" + xy +
                            u" font-family=\"'Noto Sans', sans-serif\">" + words(3) + u" <tspan font-weight=\"bold\">" +
                            words(2) + u"</tspan></text></a>\n";
                }
            }
            out_ += u"  </g>\n";
        }
        out_ += u"</svg>";
    }

    void prose() {
        out_ += u"<?xml-stylesheet type=\"text/css\" href=\"manual.css\"?>\n<article xmlns=\"urn:example:doc\" "
                u"xmlns:xi=\"urn:example:include\" xml:lang=\"en\">\n  <title>" + words(6) + u"</title>\n";
        for (uint32_t s = 0; s < 2 * scale_; ++s) {
            out_ += u"  <section" + at(u"id", u"s" + num(s)) + u">\n    <title>" + words(5) + u"</title>\n";
            for (uint32_t n = 2 + below(4); n > 0; --n) {
                switch (below(5)) {
                case 0:
                    out_ += u"    <programlisting language=\"c\"><![CDATA[" + pick(kCode) + u"\n  " + pick(kCode) +
                            u"\n]]></programlisting>\n";
                    break;
                case 1: out_ += u"    <note><para>" + mixed(2) + u"</para></note>\n    <?page-break?>\n"; break;
                case 2:
                    out_ += u"    <itemizedlist><listitem><para>" + mixed(1) + u"</para></listitem><listitem><para>" +
                            mixed(1) + u"</para></listitem></itemizedlist>\n";
                    break;
                case 3: out_ += u"    <xi:include" + at(u"href", u"part" + num(s) + u".xml") + u"/><!-- x -->\n"; break;
                default: out_ += u"    <para>" + mixed(6) + u"</para>\n";
                }
            }
            out_ += u"  </section>\n";
        }
        out_ += u"</article>\n";
    }

    bool wide_;
    uint32_t scale_;
    std::u16string nl_ = u"\n";
    std::u16string out_;
};


// A reference or a dropped comment splits text differently on each parse, so
// adjacent text nodes are joined before two trees are compared.
void joinText(vrkNode *document) {
    vrkDOMException exception{};
    ASSERT_EQ(vrkNodeReal_normalize(__FILE__, __LINE__, document, &exception), 1);
}

// Parse, write as UTF-8 and UTF-16, parse each output: the same tree, and
// writing it again gives the same bytes.
void roundTrip(Parsed first) {
    ASSERT_NE(first.document, nullptr) << "error " << first.error.code << " at " << first.error.offset;
    const std::string out8 = serialized(first.document.get(), ENCODING_UTF8);
    const std::string out16 = serialized(first.document.get(), ENCODING_UTF16);
    EXPECT_EQ(out8.substr(39), utf8(units(unitsOf(out16).substr(40)).data()));  // the same behind the headers
    joinText(first.document.get());
    const std::string tree = describe(first.document.get());
    EXPECT_EQ(tree.find("&#"), std::string::npos) << "a character reference left unresolved";
    for (const int32_t encoding : {ENCODING_UTF8, ENCODING_UTF16}) {
        const std::string &out = encoding == ENCODING_UTF8 ? out8 : out16;
        Parsed second = encoding == ENCODING_UTF8 ? parseUtf8(out) : parseUtf16(unitsOf(out));
        ASSERT_NE(second.document, nullptr)
            << encoding << ": error " << second.error.code << " at " << second.error.offset;
        EXPECT_TRUE(serialized(second.document.get(), encoding) == out) << "encoding " << encoding;
        joinText(second.document.get());
        EXPECT_TRUE(describe(second.document.get()) == tree) << "encoding " << encoding;
        EXPECT_EQ(namespaceFields(second.document.get()), namespaceFields(first.document.get()));
    }
}

}  // namespace

TEST(RealWorld, Utf8DocumentsComeBackUnchanged) {
    for (const Kind kind : kKinds) {
        for (uint64_t seed = 0; seed < 5; ++seed) {
            const std::u16string text = Generator(seed, seed % 2 == 1).document(kind, false);
            SCOPED_TRACE(std::string(kKindNames[static_cast<int>(kind)]) + " " + std::to_string(seed));
            roundTrip(parseUtf8((seed == 3 ? "\xEF\xBB\xBF" : "") + utf8(units(text).data())));
        }
    }
}

TEST(RealWorld, Utf16DocumentsInBothByteOrdersComeBackUnchanged) {
    // {byte order, byte order mark, odd address}, one per seed.
    const Utf16Options forms[] = {{Utf16Form::Native, false, false}, {Utf16Form::Native, true, false},
                                  {Utf16Form::Swapped, true, false}, {Utf16Form::Native, false, true},
                                  {Utf16Form::Swapped, true, true}};
    for (const Kind kind : kKinds) {
        for (uint64_t seed = 0; seed < 5; ++seed) {
            const std::u16string text = Generator(100 + seed, true).document(kind, true);
            SCOPED_TRACE(std::string(kKindNames[static_cast<int>(kind)]) + " " + std::to_string(seed));
            roundTrip(parseUtf16(text, forms[seed]));
        }
    }
}
