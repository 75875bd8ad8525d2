// Writing a tree as XML text through the caller's callback, one call of the
// callback per piece.
#include <cstdlib>

#include "dom/serialize_buffer.h"
#include "unistring/export.h"
#include "unistring/find_unit.h"
#include "unistring/unit_access.h"

namespace {

constexpr UniChar kLess[] = {'<', 0};
constexpr UniChar kGreater[] = {'>', 0};
constexpr UniChar kEndTagOpen[] = {'<', '/', 0};
constexpr UniChar kBlank[] = {' ', 0};
constexpr UniChar kValueOpen[] = {'=', '"', 0};
constexpr UniChar kQuote[] = {'"', 0};
constexpr UniChar kCDataOpen[] = {'<', '!', '[', 'C', 'D', 'A', 'T', 'A', '[', 0};
constexpr UniChar kCDataClose[] = {']', ']', '>', 0};
constexpr UniChar kPIOpen[] = {'<', '?', 0};
constexpr UniChar kPIClose[] = {'?', '>', 0};
constexpr UniChar kLineFeed16[] = {'\n', 0};
constexpr UniChar kHeader16[] = {'<', '?', 'x', 'm', 'l', ' ', 'v', 'e', 'r', 's', 'i', 'o', 'n', '=',
                                 '"', '1', '.', '0', '"', ' ', 'e', 'n', 'c', 'o', 'd', 'i', 'n', 'g',
                                 '=', '"', 'U', 'T', 'F', '-', '1', '6', '"', '?', '>', '\n', 0};
constexpr char kHeader8[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
constexpr char kLineFeed8[] = "\n";

// UTF-16 pieces are the units themselves, handed over in place.
struct Utf16Writer {
    vrkWriteFunc write;
    void *userData;

    bool piece(const UniChar *s, int32_t count) const {
        write(s, static_cast<uint32_t>(count) * 2, userData);
        return true;
    }
    bool piece(const UniChar *s) const { return piece(s, vrkunistrlen(s)); }
};

// UTF-8 pieces go through the buffer, which may fail to grow.
struct Utf8Writer {
    vrkWriteFunc write;
    void *userData;
    SerializeBuffer *buffer;

    bool convertAndWrite(const UniChar *s, int32_t count) const {
        const int32_t bytes = vrk::SerializeBuffer_convert(buffer, s, count);
        if (bytes < 0) return false;
        write(buffer->data, static_cast<uint32_t>(bytes), userData);
        return true;
    }
    bool piece(const UniChar *s, int32_t count) const { return convertAndWrite(s, count); }
    bool piece(const UniChar *s) const { return convertAndWrite(s, -1); }
};

// Text and attribute values: runs between the five special characters, each
// run one piece (an empty one too), each special character its reference.
template <class Writer>
bool writeEscaped(const Writer &out, const UniChar *s) {
    const int32_t length = vrkunistrlen(s);
    int32_t p = 0;
    while (p < length) {
        // The run up to the next of the five characters, found eight units
        // at a time.
        const auto run = static_cast<int32_t>(
            vrk::findUnit<'<', '>', '"', '\'', '&'>(const_cast<UniChar *>(s) + p, s + length - 1) - (s + p));
        if (!out.piece(s + p, run)) return false;
        p += run;
        const UniChar unit = vrk::loadUnit(s + p);
        for (const PredefEntity &entity : predefEnt) {
            if (entity.character == unit) {
                if (!out.piece(entity.text, entity.length)) return false;
                ++p;
                break;
            }
        }
    }
    return true;
}

template <class Writer>
bool writeList(const Writer &out, const vrkNode *start);

// Below this many open levels the walk remembers each parent itself; deeper
// than that it climbs back through the parent link of the finished list.
constexpr int kRememberedLevels = 1024;

// A node without its children (elements: up to the end of the start tag).
// Returns false when the output failed.
template <class Writer>
bool writeOpening(const Writer &out, const vrkNode *node) {
    switch (node->type) {
    case ELEMENT_NODE:
        return out.piece(kLess, 1) && out.piece(node->name) && writeList(out, vrkNamedNodeMap_item(&node->attributes, 0)) &&
               out.piece(kGreater, 1);
    case ATTRIBUTE_NODE: {
        static constexpr UniChar kEmpty[] = {0};
        const UniChar *value = node->value != nullptr ? node->value : kEmpty;
        return out.piece(kBlank, 1) && out.piece(node->name) && out.piece(kValueOpen, 2) && writeEscaped(out, value) &&
               out.piece(kQuote, 1);
    }
    case TEXT_NODE:
        return writeEscaped(out, node->value);
    case CDATA_SECTION_NODE:
        return out.piece(kCDataOpen, 9) && out.piece(node->value) && out.piece(kCDataClose, 3);
    case PROCESSING_INSTRUCTION_NODE:
        return out.piece(kPIOpen, 2) && out.piece(node->name) &&
               (vrk::loadUnit(node->value) == 0 || out.piece(kBlank, 1)) && out.piece(node->value) &&
               out.piece(kPIClose, 2);
    default:
        return true;  // documents open with nothing; unknown kinds write nothing
    }
}

template <class Writer>
bool writeClosing(const Writer &out, const vrkNode *node) {
    if (node->type != ELEMENT_NODE) return true;
    return out.piece(kEndTagOpen, 2) && out.piece(node->name) && out.piece(kGreater, 1);
}

bool hasWalkedChildren(const vrkNode *node) {
    return (node->type == ELEMENT_NODE || node->type == DOCUMENT_NODE) && node->firstChild != nullptr;
}

// Writes start and its following siblings with their subtrees, without
// recursion over the depth of the tree: only an attribute list is a nested
// call.  Any failure ends every level at once.
template <class Writer>
bool writeList(const Writer &out, const vrkNode *start) {
    const vrkNode *remembered[kRememberedLevels];
    int64_t depth = 0;
    const vrkNode *node = start;
    const vrkNode *last = nullptr;
    for (;;) {
        while (node != nullptr) {
            if (!writeOpening(out, node)) return false;
            if (hasWalkedChildren(node)) {
                if (depth < kRememberedLevels) remembered[depth] = node;
                ++depth;
                node = node->firstChild;
                continue;
            }
            if (!writeClosing(out, node)) return false;
            last = node;
            node = node->next;
        }
        if (depth == 0) return true;
        --depth;
        const vrkNode *parent = depth < kRememberedLevels ? remembered[depth] : last->parent;
        if (!writeClosing(out, parent)) return false;
        last = parent;
        node = parent->next;
    }
}

}  // namespace

// Any encoding but UTF-8 and UTF-16 gives 0 and writes nothing.
VRK_EXPORT int32_t DOM_serializeImpl(const vrkNode *node, int32_t encoding, SerializeBuffer *buffer,
                                     vrkWriteFunc write, void *userData) {
    if (encoding == ENCODING_UTF16) return writeList(Utf16Writer{write, userData}, node) ? 1 : 0;
    if (encoding == ENCODING_UTF8) return writeList(Utf8Writer{write, userData, buffer}, node) ? 1 : 0;
    return 0;
}

VRK_EXPORT int32_t vrkDOM_serialize(const vrkNode *node, int32_t encoding, vrkWriteFunc write, void *userData) {
    if (encoding == ENCODING_UTF8) {
        write(kHeader8, sizeof kHeader8 - 1, userData);
    } else if (encoding == ENCODING_UTF16) {
        write(kHeader16, sizeof kHeader16 - sizeof(UniChar), userData);
    } else {
        return 0;
    }
    SerializeBuffer buffer{static_cast<char *>(std::malloc(vrk::kSerializeBufferInitialCapacity + 1)),
                           vrk::kSerializeBufferInitialCapacity};
    if (buffer.data == nullptr) return 0;
    const int32_t result = DOM_serializeImpl(node, encoding, &buffer, write, userData);
    if (result == 1) {
        if (encoding == ENCODING_UTF8) {
            write(kLineFeed8, 1, userData);
        } else {
            write(kLineFeed16, sizeof(UniChar), userData);
        }
    }
    std::free(buffer.data);
    return result;
}
