// The parse entry: encoding detection, decoding, ownership of the text, the
// failure records.
#include <gtest/gtest.h>

#include "support/alloc_fault.h"
#include "support/parse_helpers.h"

using namespace vrktest;

TEST(ParseEntry, EveryGoodTextEndsWithoutRootForNow) {
    Parsed parsed = parseUtf8("<a/>");
    EXPECT_EQ(parsed.document, nullptr);
    EXPECT_EQ(parsed.error.code, ERR_NO_ROOT_ELEMENT);
    EXPECT_EQ(parsed.error.offset, 0);
}
