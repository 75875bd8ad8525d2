// The XML declaration and the prolog around it.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "support/alloc_fault.h"
#include "support/parse_helpers.h"
#include "support/tree_text.h"

using namespace vrktest;

namespace {

struct ErrorCase {
    std::string_view text;
    int32_t code;
    int32_t offset;
};

void expectError(const Parsed &parsed, int32_t code, int32_t offset, std::string_view text) {
    EXPECT_EQ(parsed.document, nullptr) << text;
    EXPECT_EQ(parsed.error.code, code) << text;
    EXPECT_EQ(parsed.error.offset, offset) << text;
    EXPECT_STREQ(parsed.error.file, "Source/xmlparser") << text;
}

}  // namespace

TEST(XmlDeclaration, AcceptedFormsLeaveNoTrace) {
    for (std::string_view text : {
             "<a/>",
             "<?xml version=\"1.0\"?><a/>",
             "<?xml version='2.0' ?><a/>",
             "<?xml version=\"abc_.:-Z9\"?><a/>",
             "<?xml version = '1.0' encoding = \"utf-8\" standalone = 'no' ?><a/>",
             "<?xml\tversion='1.0'\nencoding='Utf-8'\r\nstandalone=\"yes\"?><a/>",
             "<?xml version='1.0' encoding='utf-16'?><a/>",  // the detected encoding decides
             "<?xml version='1.0' encoding='ISO-8859-1'?><a/>",
             "<?xml version='1.0' encoding=''?><a/>",
             "<?xml version='1.0' encoding='9.x_'?>\n<a/>",
             "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?><a/>",
         }) {
        Parsed parsed = parseUtf8(text);
        EXPECT_EQ(describe(parsed.document.get()), "#document[a]") << text << " code " << parsed.error.code;
    }
    Parsed utf16 = parseUtf16(u"<?xml version='1.0' encoding='UTF-16'?><?p d?><a/>", {.byteOrderMark = true});
    EXPECT_EQ(describe(utf16.document.get()), "#document[?p\"d\",a]");
    Parsed swapped = parseUtf16(u"<?xml version='1.0'?><a/>", {.form = Utf16Form::Swapped, .byteOrderMark = true});
    EXPECT_EQ(describe(swapped.document.get()), "#document[a]");
}

TEST(XmlDeclaration, EveryFailureWithItsOffset) {
    for (const ErrorCase &c : std::initializer_list<ErrorCase>{
             {"<?xml?><a/>", ERR_XMLDECL_VERSION, 5},
             {"<?xml ?><a/>", ERR_XMLDECL_VERSION, 5},
             {"<?xmlversion='1.0'?><a/>", ERR_XMLDECL_VERSION, 5},
             {"<?xml Version='1.0'?><a/>", ERR_XMLDECL_VERSION, 5},
             {"<?xml-stylesheet href='s'?><a/>", ERR_XMLDECL_VERSION, 5},
             {"<?xml version '1.0'?><a/>", ERR_EQ_MISSING, 13},
             {"<?xml version=1.0?><a/>", ERR_OPENING_QUOTE, 14},
             {"<?xml version=''?><a/>", ERR_DECL_VALUE, 15},
             {"<?xml version='1.0\"?><a/>", ERR_CLOSING_QUOTE, 18},
             {"<?xml version='1/0'?><a/>", ERR_CLOSING_QUOTE, 16},
             {"<?xml version='1.0'  x?><a/>", ERR_XMLDECL_END, 21},
             {"<?xml version='1.0'encoding='UTF-8'?><a/>", ERR_XMLDECL_END, 19},
             {"<?xml version='1.0' encoding='UTF-8'standalone='no'?><a/>", ERR_XMLDECL_END, 36},
             {"<?xml version='1.0' standalone='yes' encoding='UTF-8'?><a/>", ERR_XMLDECL_END, 37},
             {"<?xml version='1.0' ?", ERR_XMLDECL_END, 20},
             {"<?xml version='1.0' encoding 'UTF-8'?><a/>", ERR_EQ_MISSING, 28},
             {"<?xml version='1.0' encoding=UTF-8?><a/>", ERR_ENCODING_DECL, 29},
             {"<?xml version='1.0' encoding='ASCII'?><a/>", ERR_BAD_ENCODING, 30},
             {"<?xml version='1.0' encoding='latin1'?><a/>", ERR_BAD_ENCODING, 30},
             {"<?xml version='1.0' encoding='UTF_8'?><a/>", ERR_BAD_ENCODING, 30},
             {"<?xml version='1.0' encoding='UTF-8\"?><a/>", ERR_CLOSING_QUOTE, 35},
             {"<?xml version='1.0' encoding='a:b'?><a/>", ERR_CLOSING_QUOTE, 31},
             {"<?xml version='1.0' standalone\"yes\"?><a/>", ERR_EQ_MISSING, 30},
             {"<?xml version='1.0' standalone=yes?><a/>", ERR_OPENING_QUOTE, 31},
             {"<?xml version='1.0' standalone='Yes'?><a/>", ERR_DECL_VALUE, 32},
             {"<?xml version='1.0' standalone='yess'?><a/>", ERR_CLOSING_QUOTE, 35},
             {"\xEF\xBB\xBF<?xml?><a/>", ERR_XMLDECL_VERSION, 6},
             // Not at the very start it is a processing instruction with a refused target.
             {" <?xml version='1.0'?><a/>", ERR_BAD_PI, 3},
             {"<!----><?xml version='1.0'?><a/>", ERR_BAD_PI, 9},
         }) {
        expectError(parseUtf8(c.text), c.code, c.offset, c.text);
    }
    // The mark counts as one unit in UTF-16 as well.
    expectError(parseUtf16(u"<?xml version='1.0' encoding='ascii'?><a/>", {.byteOrderMark = true}),
                ERR_BAD_ENCODING, 31, "UTF-16 ascii");
}

TEST(XmlDeclaration, PendingErrorWinsUnlessThereIsNoRoot) {
    for (const ErrorCase &c : std::initializer_list<ErrorCase>{
             {"<?xml version='1.0' encoding?><a/>", ERR_EQ_MISSING, 28},
             {"<?xml version='1.0' encoding?><!-- c --> <a>x</a>", ERR_EQ_MISSING, 28},
             {"<?xml version='1.0' encoding?><?p?><a/>", ERR_EQ_MISSING, 28},
             {"<?xml version='1.0' encoding?><!-- -- --><a/>", ERR_EQ_MISSING, 28},
             {"<?xml version='1.0' encoding?><a></b>", ERR_EQ_MISSING, 28},
             {"<?xml version='1.0' encoding standalone='x'?><a/>", ERR_EQ_MISSING, 28},
             {"<?xml version='1.0' standalone?><a/>", ERR_EQ_MISSING, 30},
             {"<?xml version='1.0' encoding?>", ERR_NO_ROOT_ELEMENT, 30},
             {"<?xml version='1.0' encoding?> <!--c--> junk", ERR_NO_ROOT_ELEMENT, 40},
         }) {
        expectError(parseUtf8(c.text), c.code, c.offset, c.text);
    }
}

TEST(Prolog, AllocationFailureLeavesNothing) {
    const std::u16string text =
        u"<?xml version='1.0' encoding='UTF-16' standalone='no'?>\n<!-- c --><?p1 d?>\n"
        u"<a><?in x?>t<!-- c -->u<b><?deep?></b></a>\n<?t1?><!-- c --><?t2 y ?>";
    const std::string tree = "#document[?p1\"d\",a[?in\"x\",\"t\",\"u\",b[?deep\"\"]],?t1\"\",?t2\"y \"]";
    const int64_t runs = forEachAllocationFailure([&](const AllocationRun &run) {
        Parsed parsed = parseUtf16(text);
        if (run.failed()) {
            EXPECT_EQ(parsed.document, nullptr) << "allocation " << run.failingIndex();
            EXPECT_EQ(parsed.error.code, ERR_OUT_OF_MEMORY) << "allocation " << run.failingIndex();
            EXPECT_EQ(parsed.error.offset, 0) << "allocation " << run.failingIndex();
        } else {
            EXPECT_EQ(describe(parsed.document.get()), tree);
        }
    });
    EXPECT_GT(runs, 10);
}
