// The generated document shapes.  Every shape has its own seed, so adding
// or changing one leaves the others' bytes alone.
#include "shapes.h"

#include <array>
#include <string_view>

#include "shape_writer.h"

namespace vrkperf {
namespace {

using Words = std::span<const std::string_view>;

constexpr std::array<std::string_view, 24> kEnglish = {
    "steel", "bolt",  "valve",  "gasket", "flange", "rotor",  "seal",   "hinge",
    "spare", "crate", "bearing", "spring", "washer", "bracket", "pump", "filter",
    "the",   "of",    "and",    "with",   "for",    "under",  "new",    "heavy"};

constexpr std::array<std::string_view, 8> kSuppliers = {
    "Baker &amp; Sons", "Northwind",  "Acme Works",        "Keller GmbH",
    "Lund &amp; Berg",  "Oakridge",   "Marsh Industrial",  "Polar Supply"};

constexpr std::array<std::string_view, 6> kCountries = {"DE", "FR", "SE", "US", "JP", "GR"};
constexpr std::array<std::string_view, 3> kStatus = {"active", "retired", "pending"};
constexpr std::array<std::string_view, 4> kCurrencies = {"EUR", "USD", "SEK", "JPY"};

constexpr std::array<std::string_view, 14> kLatin = {
    "café",  "naïve", "Größe",  "Ærø",  "façade", "jalapeño", "smørrebrød",
    "żółć",  "Łódź",  "crème",  "brûlée", "Äpfel", "Øresund", "señor"};
constexpr std::array<std::string_view, 12> kGreek = {
    "άλφα",  "βήτα",  "γάμμα", "δέλτα",  "λόγος", "θάλασσα",
    "ήλιος", "φως",   "ψυχή",  "ωκεανός", "πόλη",  "βιβλίο"};
constexpr std::array<std::string_view, 14> kCjk = {
    "東京", "大阪", "日本語", "中文", "漢字", "北京",   "上海",
    "文字", "電話", "学校",   "图书馆", "한국어", "서울", "価格表"};

// Sentences of one script, ended by the matching full stop.
void sentence(ShapeWriter &w, Words words, std::size_t count, std::string_view stop) {
    w.words(words, count);
    w << stop;
}

// --- data records ---------------------------------------------------------

void record(ShapeWriter &w, std::size_t id) {
    Random &r = w.random();
    w << "  <record id=\"r" << id << "\" status=\"" << w.pick(kStatus) << "\" updated=\"";
    w.date();
    w << "\">\n    <name>";
    w.words(kEnglish, 2 + r.below(3));
    w << ' ' << r.below(100) << "</name>\n    <supplier code=\"S" << 1000 + r.below(9000) << "\" country=\""
      << w.pick(kCountries) << "\">" << w.pick(kSuppliers) << "</supplier>\n    <price currency=\""
      << w.pick(kCurrencies) << "\">";
    w.decimal(1000);
    w << "</price>\n    <quantity unit=\"pcs\">" << r.below(5000) << "</quantity>\n    <dimensions width=\""
      << 1 + r.below(400) << "\" height=\"" << 1 + r.below(400) << "\" depth=\"" << 1 + r.below(90)
      << "\"/>\n    <tags>";
    for (std::size_t tags = 1 + r.below(4); tags > 0; --tags) w << "<tag>" << w.pick(kEnglish) << "</tag>";
    w << "</tags>\n";
    if (r.chance(40)) {
        w << "    <parts>\n";
        for (std::size_t parts = 1 + r.below(3); parts > 0; --parts) {
            w << "      <part ref=\"r" << r.below(id + 1) << "\" count=\"" << 1 + r.below(12) << "\">";
            w.words(kEnglish, 2);
            w << "</part>\n";
        }
        w << "    </parts>\n";
    }
    if (r.chance(50)) {
        w << "    <note>";
        w.words(kEnglish, 4 + r.below(10));
        w << "</note>\n";
    }
    w << "  </record>\n";
}

// --- attribute-heavy --------------------------------------------------------

void item(ShapeWriter &w, std::size_t id) {
    Random &r = w.random();
    w << "  <item id=\"i" << id << "\" sku=\"SKU-" << 100000 + r.below(900000) << "\" name=\"" << w.pick(kEnglish)
      << ' ' << w.pick(kEnglish) << "\" color=\"#" << 0x100000 + r.below(0xEFFFFF) << "\" size=\""
      << 1 + r.below(60) << "\" weight=\"";
    w.decimal(100);
    w << "\" price=\"";
    w.decimal(10000);
    w << "\" currency=\"" << w.pick(kCurrencies) << "\" stock=\"" << r.below(1000) << "\" warehouse=\"W"
      << r.below(40) << "\" created=\"";
    w.date();
    w << "\" flags=\"" << (r.chance(50) ? "a b" : "c") << "\" origin=\"" << w.pick(kCountries) << '"';
    if (r.chance(30)) w << " note=\"" << w.pick(kSuppliers) << " &lt;" << r.below(99) << "&gt;\"";
    if (r.chance(25)) {
        w << ">\n    <variant code=\"v" << r.below(9) << "\" size=\"" << r.below(60) << "\" color=\"#"
          << 0x100000 + r.below(0xEFFFFF) << "\" stock=\"" << r.below(100) << "\"/>\n  </item>\n";
    } else {
        w << "/>\n";
    }
}

// --- mixed-content prose ------------------------------------------------------

constexpr std::array<std::string_view, 6> kReferences = {"&amp;", "&lt;", "&gt;", "&quot;", "&#233;", "&#x2014;"};
constexpr std::array<std::string_view, 3> kInline = {"em", "b", "code"};

void paragraph(ShapeWriter &w, std::size_t section) {
    Random &r = w.random();
    w << "    <para>";
    for (std::size_t phrase = 4 + r.below(8); phrase > 0; --phrase) {
        w.words(kEnglish, 3 + r.below(8));
        switch (r.below(5)) {
            case 0: {
                const std::string_view tag = w.pick(kInline);
                w << " <" << tag << '>';
                w.words(kEnglish, 1 + r.below(3));
                w << "</" << tag << "> ";
                break;
            }
            case 1:
                w << " <link href=\"#s" << r.below(section + 1) << "\">section " << r.below(section + 1)
                  << "</link> ";
                break;
            case 2:
                w << ' ' << w.pick(kReferences) << ' ';
                break;
            default:
                w << ", ";
                break;
        }
    }
    w << "end.</para>\n";
}

void section(ShapeWriter &w, std::size_t id) {
    Random &r = w.random();
    w << "  <section id=\"s" << id << "\">\n    <title>";
    w.words(kEnglish, 2 + r.below(4));
    w << "</title>\n";
    for (std::size_t paragraphs = 2 + r.below(4); paragraphs > 0; --paragraphs) paragraph(w, id);
    w << "  </section>\n";
}

// --- deep nesting -------------------------------------------------------------

// Within the nesting limits of every peer library (tinyxml2 stops at 100).
constexpr std::size_t kDepth = 90;

void chain(ShapeWriter &w, std::size_t id) {
    Random &r = w.random();
    w << "<chain id=\"c" << id << "\">";
    for (std::size_t level = 0; level < kDepth; ++level) {
        w << "<level n=\"" << level << "\">" << w.pick(kEnglish);
    }
    w << "<leaf>";
    w.words(kEnglish, 3);
    w << "</leaf>";
    for (std::size_t level = 0; level < kDepth; ++level) {
        w << "</level>";
        if (r.chance(20)) w << w.pick(kEnglish);
    }
    w << "</chain>\n";
}

// --- non-ASCII heavy ----------------------------------------------------------

void entry(ShapeWriter &w, std::size_t id) {
    Random &r = w.random();
    w << "  <項目 番号=\"" << id << "\" 都市=\"" << w.pick(kCjk) << "\" πόλη=\"" << w.pick(kGreek) << "\">\n    <τίτλος>";
    w.words(kGreek, 2 + r.below(3));
    w << "</τίτλος>\n    <名前>";
    w.words(kCjk, 2 + r.below(3));
    w << "</名前>\n    <beschreibung sprache=\"de\">";
    sentence(w, kLatin, 4 + r.below(8), ".");
    w << "</beschreibung>\n    <περιγραφή>";
    sentence(w, kGreek, 5 + r.below(10), ".");
    w << "</περιγραφή>\n    <説明>";
    for (std::size_t i = 3 + r.below(8); i > 0; --i) w << w.pick(kCjk);
    w << "。</説明>\n  </項目>\n";
}

template <class Unit>
std::string build(std::size_t targetBytes, std::uint64_t seed, std::string_view head, std::string_view tail,
                  Unit unit) {
    ShapeWriter w(targetBytes, seed);
    w << head;
    for (std::size_t id = 0; w.out().size() + tail.size() < targetBytes; ++id) unit(w, id);
    w << tail;
    return w.take();
}

constexpr std::string_view kUtf8Declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

}  // namespace

std::string recordsDocument(std::size_t targetBytes, const char *encodingName) {
    std::string head = "<?xml version=\"1.0\" encoding=\"";
    head += encodingName;
    head += "\"?>\n<inventory xmlns=\"urn:example:inventory\" generated=\"2024-05-01\">\n";
    return build(targetBytes, 0x5EED0001, head, "</inventory>\n", record);
}

std::string attributesDocument(std::size_t targetBytes) {
    return build(targetBytes, 0x5EED0002, std::string(kUtf8Declaration) + "<items>\n", "</items>\n", item);
}

std::string proseDocument(std::size_t targetBytes) {
    return build(targetBytes, 0x5EED0003, std::string(kUtf8Declaration) + "<book lang=\"en\">\n", "</book>\n",
                 section);
}

std::string deepDocument(std::size_t targetBytes) {
    return build(targetBytes, 0x5EED0004, std::string(kUtf8Declaration) + "<chains>\n", "</chains>\n", chain);
}

std::string nonAsciiDocument(std::size_t targetBytes) {
    return build(targetBytes, 0x5EED0005, std::string(kUtf8Declaration) + "<目録 言語=\"多言語\">\n", "</目録>\n",
                 entry);
}

}  // namespace vrkperf
