/*
 * libvrkxml: a small XML library.
 *
 * Parses UTF-8 or UTF-16 text into a tree of 16-bit strings, lets the caller
 * read and edit that tree, and writes it back as UTF-8 or UTF-16 through a
 * callback.  This header is the whole public interface and its reference.
 *
 * Conventions that hold throughout:
 *  - Strings are zero-terminated arrays of UniChar (16-bit units in the
 *    machine's byte order).  Lengths are counts of units unless a comment
 *    says bytes.  No unit pointer needs to be aligned: the library reads and
 *    writes units byte by byte.
 *  - Every block the library hands out comes from malloc and belongs to the
 *    caller, who releases it with free (strings) or vrkDOM_destroyNode (nodes).
 *  - Operations with "Real" in their family name can fail.  They take the
 *    caller's source location first and a vrkDOMException last.  If the
 *    record already holds a code they do nothing and return null or 0, so the
 *    first failure survives a chain of calls.  On a failure of their own they
 *    fill all five fields and return null or 0.  They never clear the record.
 *  - Operations without "Real" cannot fail; a miss is null.
 *  - A null argument where a comment does not allow one is a limit the caller
 *    respects.
 *  - The library keeps no mutable global state and takes no lock: separate
 *    trees may be used from separate threads at once; one tree must not be
 *    used from two threads at once.
 *
 * It reads top down: the tree's types, parsing, destroying, navigating,
 * making and editing nodes, namespaces, writing, text conversions and the
 * convenience macros; last, in a section of their own, the parser's and
 * serializer's building blocks, which the library exports as well.
 */
#ifndef VRKXML_H
#define VRKXML_H

/* The library's version.  The build reads it from these lines, so that the
 * shared library, the CMake package and pkg-config carry the same one. */
#define VRKXML_VERSION_MAJOR 1
#define VRKXML_VERSION_MINOR 0
#define VRKXML_VERSION_PATCH 0
#define VRKXML_VERSION_STRING "1.0.0"

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------ */
/* Types of the tree                                                        */
/* ------------------------------------------------------------------------ */

/* One 16-bit code unit in the machine's byte order. */
typedef uint16_t UniChar;

/* A node of a tree; the record is laid out below. */
typedef struct vrkNode vrkNode;

/* The attribute list held inside every node: `count` attributes chained
 * through their `previous` and `next` fields from `first`.  Zeroed is empty. */
typedef struct vrkNamedNodeMap {
    int32_t  count;
    vrkNode *first;
} vrkNamedNodeMap;

/* The one record for every kind of node.  Read the fields directly; there
 * are no accessors.  By kind:
 *   element, attribute: name = qualified name as written (node's own);
 *                       attribute value = node's own string, null until set;
 *                       namespaceURI, prefix, localName = node's own or null.
 *   text:               name = static "#text", value = node's own string.
 *   CDATA section:      name = static "#cdata-section", value = node's own.
 *   processing instr.:  name = target, value = data (both the node's own).
 *   document:           name = static "#document", value = null.
 * Every string of a node's own belongs to it and goes with it; no two
 * fields, and no two nodes, share one.  A node is one block from malloc:
 * the record with the strings it was made with behind it, so these strings
 * are not blocks of their own.  Never free or realloc a node's string;
 * change it through vrkNodeReal_setNodeValue or vrkNodeReal_setPrefix.  A
 * string that such a change makes longer than its room in the block moves
 * to a block of its own, which the node owns likewise.  A caller may store
 * a string from malloc in a field that is null; the node then owns it and
 * frees it with itself.  Records come only from the library's factories,
 * the parser and vrkNodeReal_cloneNode. */
struct vrkNode {
    UniChar        *name;
    UniChar        *value;
    int32_t         type;
    vrkNamedNodeMap attributes;
    vrkNode        *parent;
    vrkNode        *firstChild;
    vrkNode        *lastChild;
    vrkNode        *previous;
    vrkNode        *next;
    UniChar        *namespaceURI;
    UniChar        *prefix;
    UniChar        *localName;
};

/* The failure record of tree operations.  The caller owns it; `code` is 0
 * while nothing is pending.  `file`/`line` name the reporting site inside the
 * library ("Source/dom" or "Source/xmlparser"); `callerFile`/`callerLine` are
 * the location arguments of the failed call. */
typedef struct vrkDOMException {
    int32_t     code;
    const char *file;
    int32_t     line;
    const char *callerFile;
    int32_t     callerLine;
} vrkDOMException;

/* The failure record of a parse.  Its first five fields are laid out exactly
 * as in vrkDOMException.  `offset` counts 16-bit units of the decoded text
 * from its start (a byte order mark counts as one unit); `message` is a
 * static text or null. */
typedef struct vrkParseError {
    int32_t     code;
    const char *file;
    int32_t     line;
    const char *callerFile;
    int32_t     callerLine;
    int32_t     offset;
    const char *message;
} vrkParseError;

/* The caller's output callback: `length` bytes at `data`, valid only during
 * the call.  The return value is ignored by the library. */
typedef int (*vrkWriteFunc)(const void *data, uint32_t length, void *userData);

/* ------------------------------------------------------------------------ */
/* Constants                                                                */
/* ------------------------------------------------------------------------ */

/* Node types (the DOM's nodeType values). */
#define ELEMENT_NODE                1
#define ATTRIBUTE_NODE              2
#define TEXT_NODE                   3
#define CDATA_SECTION_NODE          4
#define PROCESSING_INSTRUCTION_NODE 7
#define DOCUMENT_NODE               9

/* Encoding ids: results of IdentifyCharacterEncoding, and the encoding
 * argument of vrkDOM_serialize (which takes UTF8 or UTF16). */
#define ENCODING_UNKNOWN       0
#define ENCODING_UTF8          2
#define ENCODING_UTF16         3 /* UTF-16 in the machine's byte order      */
#define ENCODING_UTF16_SWAPPED 4 /* UTF-16 in the opposite byte order       */

/* Error codes: one number space for the parser and the tree operations. */
#define ERR_OUT_OF_MEMORY        1  /* an allocation failed                        */
#define ERR_XMLDECL_VERSION      5  /* XML declaration without version info        */
#define ERR_BAD_ENCODING         6  /* encoding is neither UTF-8 nor UTF-16        */
#define ERR_XMLDECL_END          7  /* XML declaration not closed by ?>            */
#define ERR_UNTERMINATED         8  /* comment or CDATA section not closed         */
#define ERR_COMMENT_HYPHENS      9  /* two hyphens inside a comment                */
#define ERR_CLOSING_QUOTE        10 /* declaration value without closing quote     */
#define ERR_ENCODING_DECL        11 /* bad encoding declaration, or corrupt UTF-8  */
#define ERR_NO_ROOT_ELEMENT      12 /* the document has no root element            */
#define ERR_END_TAG              14 /* end tag missing or not matching             */
#define ERR_CHAR_REF             15 /* malformed character reference               */
#define ERR_ATTVALUE_END         17 /* attribute value not closed                  */
#define ERR_NSATT_NAME           18 /* xmlns: not followed by an NCName            */
#define ERR_EQ_MISSING           19 /* = of an attribute or declaration missing    */
#define ERR_OPENING_QUOTE        20 /* value does not begin with a quote           */
#define ERR_DECL_VALUE           21 /* invalid version or standalone value         */
#define ERR_TAG_END              22 /* closing > of a tag missing                  */
#define ERR_ETAG_NAME            23 /* end tag without a valid name                */
#define ERR_UNDECLARED_PREFIX    24 /* namespace prefix not declared               */
#define ERR_BAD_PI               25 /* malformed processing instruction            */
#define ERR_DUPLICATE_ATTRIBUTE  26 /* a start tag repeats an attribute name       */
#define ERR_HIERARCHY_REQUEST    29 /* the node may not be placed there            */
#define ERR_NOT_FOUND            34 /* the node is not a child of that parent      */
#define ERR_NAMESPACE            40 /* namespace name or prefix missing            */
/* Limits of this library's own, beyond the grammar: */
#define ERR_TEXT_TOO_LONG        41 /* the text has more than 2,147,483,647 units:
                                       offsets would not fit 32 bits; refused by
                                       vrkDOM_parse before anything is decoded or
                                       swapped, with offset 0 and the message
                                       "Text too long: more than 2147483647 units." */

/* ------------------------------------------------------------------------ */
/* Parsing                                                                  */
/* ------------------------------------------------------------------------ */

/* Parses the writable, zero-terminated text (one zero byte ends UTF-8, one
 * zero unit ends UTF-16) into a new document, which the caller releases with
 * vrkDOM_destroyNode(document, 1).  On failure returns null and fills all
 * seven fields of *result; on success *result is not written.
 *
 * The encoding is detected from the first two bytes (IdentifyCharacterEncoding):
 * UTF-8 is decoded into a private copy that is freed before returning;
 * UTF-16 in the machine's order is read in place and left unchanged; UTF-16
 * in the opposite order is byte-swapped in place and stays swapped.  UTF-16
 * text may begin at any address.
 *
 * A text of more than 2,147,483,647 units fails with ERR_TEXT_TOO_LONG.
 *
 * What is read: UTF-8 text up to and including its first zero byte, UTF-16
 * text up to and including its first zero unit.  A text whose first byte is
 * '<' or a white-space byte (0x09 to 0x0D, 0x20) and whose second byte is
 * zero is UTF-16 little-endian by the detection.  So a one-byte text of such
 * a character is read as one 16-bit unit and must be followed by a whole zero
 * unit, that is two more zero bytes (four bytes in all); it then fails with
 * ERR_NO_ROOT_ELEMENT like any document without a root.  Every other text of
 * one byte is UTF-8 and needs only its terminating zero byte. */
vrkNode *vrkDOM_parse(void *text, vrkParseError *result);

/* ------------------------------------------------------------------------ */
/* Destroying                                                               */
/* ------------------------------------------------------------------------ */

/* Releases node and what it owns; null does nothing.  An element always
 * takes its attributes along; with deep != 0 an element or document also
 * takes all its children and their subtrees.  The node is not unlinked from
 * its parent first: remove a linked node before destroying it.  The walk
 * uses no recursion, so a tree of any depth is released. */
void     vrkDOM_destroyNode(vrkNode *node, int32_t deep);

/* ------------------------------------------------------------------------ */
/* Navigating                                                               */
/* ------------------------------------------------------------------------ */

/* The first element child of a document; null for null, for a node that is
 * no document, and for a document without an element child. */
vrkNode *vrkDOM_getDocumentElement(vrkNode *document);
/* Number of children of node, of all kinds (attributes do not count). */
int32_t  vrkDOM_getNumberOfChildren(const vrkNode *node);

/* Attribute maps (the `attributes` field of a node): */
/* An ordered list in insertion order, searched from the front.  The plain
 * operations key on `name`; the NS operations on namespaceURI + localName.
 * Comparisons are exact.  None allocates; a miss is null. */

/* Number of attributes. */
int32_t  vrkNamedNodeMap_getLength(const vrkNamedNodeMap *map);
/* The attribute at index (from 0), or null when out of range. */
vrkNode *vrkNamedNodeMap_item(const vrkNamedNodeMap *map, int32_t index);
/* The attribute whose name is exactly the nameLength units at name. */
vrkNode *vrkNamedNodeMap_getNamedItem(const vrkNamedNodeMap *map, const UniChar *name,
                                      int32_t nameLength);
/* The attribute with exactly this namespace name and local name. */
vrkNode *vrkNamedNodeMap_getNamedItemNS(const vrkNamedNodeMap *map,
                                        const UniChar *namespaceURI, int32_t uriLength,
                                        const UniChar *localName, int32_t localNameLength);

/* ------------------------------------------------------------------------ */
/* Making nodes                                                             */
/* ------------------------------------------------------------------------ */
/* Text arguments are unit arrays with a length; they need no terminator and
 * are copied.  A factory's node is detached and belongs to the caller.  On
 * exhausted memory: null, ERR_OUT_OF_MEMORY, nothing left allocated. */

/* A new, empty document (caller owns it), or null with ERR_OUT_OF_MEMORY. */
vrkNode *vrkDOMReal_createDocument(const char *callerFile, int32_t callerLine,
                                   vrkDOMException *exception);
/* Element or attribute (by `type`) named `name`; no namespace fields. */
vrkNode *vrkDOMReal_createEANode(const char *callerFile, int32_t callerLine, int32_t type,
                                 const UniChar *name, int32_t nameLength,
                                 vrkDOMException *exception);
/* Element or attribute with name "prefix:localName".  namespaceURI may be
 * null (the field stays null); prefix and localName are required. */
vrkNode *vrkDOMReal_createEANodeNSP(const char *callerFile, int32_t callerLine, int32_t type,
                                    const UniChar *namespaceURI, int32_t uriLength,
                                    const UniChar *prefix, int32_t prefixLength,
                                    const UniChar *localName, int32_t localNameLength,
                                    vrkDOMException *exception);
/* Text node holding a copy of text (empty for length 0, never null). */
vrkNode *vrkDOMReal_createTextNode(const char *callerFile, int32_t callerLine,
                                   const UniChar *text, int32_t textLength,
                                   vrkDOMException *exception);
/* CDATA section node holding a copy of text. */
vrkNode *vrkDOMReal_createCDATASection(const char *callerFile, int32_t callerLine,
                                       const UniChar *text, int32_t textLength,
                                       vrkDOMException *exception);
/* Processing instruction with a copy of target (name) and data (value). */
vrkNode *vrkDOMReal_createProcessingInstruction(const char *callerFile, int32_t callerLine,
                                                const UniChar *target, int32_t targetLength,
                                                const UniChar *data, int32_t dataLength,
                                                vrkDOMException *exception);

/* ------------------------------------------------------------------------ */
/* Editing                                                                  */
/* ------------------------------------------------------------------------ */

/* Replaces the value of an attribute, text or CDATA node with a copy of
 * value (which may lie in the old value): 1.  Any other kind: 0 with nothing
 * recorded.  Exhausted memory: 0 with ERR_OUT_OF_MEMORY, the old value kept
 * (a value no longer than the old one is written in its place and needs no
 * memory). */
int32_t  vrkNodeReal_setNodeValue(const char *callerFile, int32_t callerLine, vrkNode *node,
                                  const UniChar *value, int32_t valueLength,
                                  vrkDOMException *exception);
/* Appends newChild (a node in no list) as the last child of parent and
 * returns it.  Refuses with ERR_HIERARCHY_REQUEST a document as newChild,
 * and anything but a processing instruction under a document that has its
 * document element; a refusal changes nothing. */
vrkNode *vrkNodeReal_appendChild(const char *callerFile, int32_t callerLine, vrkNode *parent,
                                 vrkNode *newChild, vrkDOMException *exception);

/* The three list edits allocate nothing, and a refusal changes nothing.
 * newChild must be in no list (remove it from its former parent first);
 * no check is made that it is not refChild/oldChild or an ancestor of
 * parent.  A node taken out is the caller's and keeps its old links.
 *
 * Puts newChild ahead of refChild, a child of parent; returns newChild.
 * Refuses, in this order: a document as newChild (ERR_HIERARCHY_REQUEST);
 * a parent that is no element and is itself a child of a document that has
 * its document element (ERR_HIERARCHY_REQUEST); refChild not a child of
 * parent (ERR_NOT_FOUND). */
vrkNode *vrkNodeReal_insertBefore(const char *callerFile, int32_t callerLine, vrkNode *parent,
                                  vrkNode *newChild, vrkNode *refChild,
                                  vrkDOMException *exception);
/* Puts newChild in the place of oldChild; returns oldChild (the caller's).
 * Refuses a parent that is no element (ERR_HIERARCHY_REQUEST: children of a
 * document cannot be replaced), then an oldChild of another parent
 * (ERR_NOT_FOUND). */
vrkNode *vrkNodeReal_replaceChild(const char *callerFile, int32_t callerLine, vrkNode *parent,
                                  vrkNode *newChild, vrkNode *oldChild,
                                  vrkDOMException *exception);
/* Takes oldChild out of parent's list; returns it (the caller's).  Refuses
 * only an oldChild of another parent (ERR_NOT_FOUND). */
vrkNode *vrkNodeReal_removeChild(const char *callerFile, int32_t callerLine, vrkNode *parent,
                                 vrkNode *oldChild, vrkDOMException *exception);

/* Rewrites the prefix of node in `prefix` and `name`: 1, or 0.  prefix is
 * a zero-terminated string of prefixLength units; null removes the prefix,
 * and so does an empty one (prefixLength 0), which would otherwise leave a
 * name beginning with its colon.  localName and namespaceURI are not
 * touched.  Refuses a node without a namespaceURI (ERR_NAMESPACE).  A
 * prefix of the same length or shorter is written in place and allocates
 * nothing; a longer one needs room for both strings (ERR_OUT_OF_MEMORY
 * leaves the node reading as before). */
int32_t  vrkNodeReal_setPrefix(const char *callerFile, int32_t callerLine, vrkNode *node,
                               const UniChar *prefix, int32_t prefixLength,
                               vrkDOMException *exception);
/* Merges every run of adjacent text nodes below node (null allowed) into
 * the run's first node, which may get a new value block; the others are
 * destroyed.  A text node as node merges with the one after it only.  CDATA
 * sections never merge; attributes are not visited.  Exhausted memory: 0 and
 * ERR_OUT_OF_MEMORY, the merges before it standing. */
int32_t  vrkNodeReal_normalize(const char *callerFile, int32_t callerLine, vrkNode *node,
                               vrkDOMException *exception);
/* A detached copy of node by itself, whatever deep says: no children, no
 * attributes, no links; every string is a new copy, but the static names of
 * text, CDATA section and document nodes are shared, so that a copied
 * document is destroyed like any other. */
vrkNode *vrkNodeReal_cloneNode(const char *callerFile, int32_t callerLine, const vrkNode *node,
                               int32_t deep, vrkDOMException *exception);

/* Attribute maps, keyed as for reading them (see Navigating). */
/* Takes the named attribute out of the map and returns it (now the
 * caller's; its own links are left as they were). */
vrkNode *vrkNamedNodeMap_removeNamedItem(vrkNamedNodeMap *map, const UniChar *name,
                                         int32_t nameLength);
/* NS form of the removal (note: no vrk prefix). */
vrkNode *NamedNodeMap_removeNamedItemNS(vrkNamedNodeMap *map,
                                        const UniChar *namespaceURI, int32_t uriLength,
                                        const UniChar *localName, int32_t localNameLength);
/* Puts node into the map: in place of the attribute with the same name,
 * which is returned (now the caller's), or at the end, returning null. */
vrkNode *vrkNamedNodeMap_setNamedItem(vrkNamedNodeMap *map, vrkNode *node);
/* NS form of the set.  A node without namespaceURI or localName always goes
 * at the end. */
vrkNode *vrkNamedNodeMap_setNamedItemNS(vrkNamedNodeMap *map, vrkNode *node);
/* Sets attribute (in no map, null previous and next) on element: the
 * replaced attribute (the caller's) or null.  ERR_HIERARCHY_REQUEST when
 * element is no element. */
vrkNode *vrkElementReal_setAttributeNode(const char *callerFile, int32_t callerLine,
                                         vrkNode *element, vrkNode *attribute,
                                         vrkDOMException *exception);
/* NS form of the set on an element, refusing alike. */
vrkNode *vrkElementReal_setAttributeNodeNS(const char *callerFile, int32_t callerLine,
                                           vrkNode *element, vrkNode *attribute,
                                           vrkDOMException *exception);

/* ------------------------------------------------------------------------ */
/* Namespaces on a tree                                                     */
/* ------------------------------------------------------------------------ */

/* Element or attribute from a namespace name and a prefixed qualified name
 * (zero-terminated, qualifiedNameLength >= 1), split by the QName grammar;
 * what follows the first QName is dropped.  ERR_NAMESPACE for a null
 * namespaceURI or a name that is no QName or has no prefix.  The new node is
 * the caller's; exhausted memory as for the factories. */
vrkNode       *vrkDOMReal_createEANodeNS(const char *callerFile, int32_t callerLine, int32_t type,
                                         const UniChar *namespaceURI, int32_t uriLength,
                                         const UniChar *qualifiedName,
                                         int32_t qualifiedNameLength,
                                         vrkDOMException *exception);
/* The namespace name declared for prefix (or the default, with
 * acceptDefault) at node or above; owned by the declaring attribute.
 * Nearest element first, then map order.  xmlns folds case; the prefix
 * compares exactly over prefixLength units. */
const UniChar *vrkDOM_getDeclaredNameSpace(const vrkNode *node, int32_t acceptDefault,
                                           const UniChar *prefix, int32_t prefixLength);
/* The `prefix` field ("xmlns") of the first prefixed declaration of uri at
 * node or above, or null; owned by the declaring attribute.  Nearest element
 * first; xmlns and uri compare through vrkunistrcmp, folding case. */
const UniChar *DOM_getDeclaredNameSpacePrefix(const vrkNode *node, const UniChar *uri);

/* ------------------------------------------------------------------------ */
/* Writing                                                                  */
/* ------------------------------------------------------------------------ */

/* Writes the header, node and its following siblings, and a closing line
 * feed through write, as ENCODING_UTF8 or ENCODING_UTF16 (machine order, no
 * byte order mark), one call of write per piece: each tag part, name, run of
 * text and reference.  Result 1 when all was written, 0 otherwise: another
 * encoding (nothing written), the scratch buffer's first allocation failed
 * (only the header written), or it could not grow, also because a piece's
 * UTF-8 form would exceed 2,147,483,647 bytes (UTF-8 only; everything
 * ahead of that piece stays written, no end tags or closing line feed
 * follow).  The tree is only read.  UTF-16 pieces are the node's own units,
 * handed to write in place.
 *
 * Depth: the walk does not recurse over the depth of the tree.  It remembers
 * the parents of the first 1,024 open levels itself; from deeper levels it
 * climbs back through the parent link of the child list it has finished.
 * So every tree the parser or the editing operations make is written
 * whatever its depth; a hand-made tree deeper than that must have sound
 * parent links (DOM_checkIntegrity reports broken ones). */
int32_t vrkDOM_serialize(const vrkNode *node, int32_t encoding, vrkWriteFunc write,
                         void *userData);

/* ------------------------------------------------------------------------ */
/* Text: 16-bit strings, UTF-8 decoding and encoding, UTF-16 order          */
/* ------------------------------------------------------------------------ */
/* These report through their results alone.  A destination `dest` is the
 * caller's and must be large enough; none of them checks it. */

/* Number of units ahead of the first zero unit. */
int32_t  vrkunistrlen(const UniChar *s);
/* Copies src with its terminator, forward; dest may overlap src from below.
 * Returns dest. */
UniChar *vrkunistrcpy(UniChar *dest, const UniChar *src);
/* Copies src with its terminator behind the end of dest.  Returns dest. */
UniChar *vrkunistrcat(UniChar *dest, const UniChar *src);
/* Copies up to n units of src; pads with zero units up to n if src is
 * shorter, and stores no terminator when src has n units or more.  Forward,
 * so dest may overlap src from below.  Returns dest. */
UniChar *vrkunistrncpy(UniChar *dest, const UniChar *src, int32_t n);
/* New copy of s (caller frees), or null when memory runs out. */
UniChar *vrkunistrdup(const UniChar *s);
/* New string of exactly the n units at s and a terminator (caller frees), or
 * null when memory runs out.  s must hold n units. */
UniChar *unistrndup(const UniChar *s, int32_t n);
/* As unistrndup: n units copied as they are, a zero unit behind them. */
UniChar *vrkUniCharArrayToString(const UniChar *chars, int32_t n);
/* First unit of s equal to the low 16 bits of c, or null; never the
 * terminator, so c = 0 gives null. */
UniChar *vrkunistrchr(const UniChar *s, int32_t c);
/* Length of the leading run of s in which no unit of `set` occurs. */
int32_t  vrkunistrcspn(const UniChar *s, const UniChar *set);
/* Comparison that folds units below 256 through toupper (locale-dependent;
 * a to z in the default locale); units from 256 compare exactly.  Negative,
 * 0 or positive: the difference of the first mapped units that differ. */
int32_t  vrkunistrcmp(const UniChar *a, const UniChar *b);
/* Exact comparison of at most n units and of at least one (n <= 1 compares
 * the first units).  Neither string is read past its terminator. */
int32_t  vrkunistrncmp(const UniChar *a, const UniChar *b, int32_t n);

/* Decodes one UTF-8 sequence at *cursor.  Returns the unit, or 0xFFFF on
 * failure (bad lead or continuation byte, overlong form, surrogate, a value
 * above 0xFFFF, and U+FFFF itself).  A bad lead byte leaves the cursor; a bad
 * continuation byte leaves it on that byte; a complete sequence moves it
 * behind the sequence whatever the verdict. */
UniChar  vrkUTF8ToUniChar(const char **cursor);
/* Number of units the zero-terminated UTF-8 text s decodes to, or -1 when it
 * is malformed anywhere or the count exceeds 2,147,483,647. */
int32_t  vrkUTF8StrLen(const char *s);
/* Decodes the zero-terminated UTF-8 text s.  With dest null: a new string
 * (caller frees), or null when s is malformed (nothing allocated) or memory
 * runs out.  With dest: decodes into dest unchecked and returns it; on
 * malformed input returns null, dest then holding the units so far and the
 * 0xFFFF unit, unterminated. */
UniChar *vrkUTF8ToUniCharString(const char *s, UniChar *dest);
/* 1 when the two bytes at p are FE FF, else 0. */
int32_t  ShouldSwapUTF16(const void *p);
/* Exchanges the two bytes of every unit of s in place, up to the first zero
 * unit; a byte order mark is swapped like any other unit. */
void     SwapUTF16(UniChar *s);
/* Encoding id of the text from its first two bytes; ENCODING_UNKNOWN when
 * length < 2.  Reads at most two bytes. */
int32_t  IdentifyCharacterEncoding(const void *bytes, int32_t length);

/* Writes the 1, 2 or 3 UTF-8 bytes of one unit to dest (no terminator) and
 * returns their number.  Surrogates are written one by one, never paired. */
int32_t  vrkUniCharToUTF8(UniChar unit, char *dest);
/* Number of UTF-8 bytes the whole of s needs (no terminator counted), or -1
 * when that exceeds 2,147,483,647 (the conversions with a null dest then
 * give null, and the serializer's result is 0). */
int32_t  vrkUniCharToUTF8Len(const UniChar *s);
/* The same for at most the first n units; n <= 0 gives 0. */
int32_t  vrkUniCharNToUTF8Len(const UniChar *s, int32_t n);
/* Converts s to UTF-8 with a terminating zero byte.  With dest null a new
 * block of exactly the needed size (caller frees), or null when memory runs
 * out.  Returns the destination. */
char    *vrkUniCharStringToUTF8(const UniChar *s, char *dest);
/* The same for at most the first n units of s. */
char    *vrkUniCharStringNToUTF8(const UniChar *s, int32_t n, char *dest);

/* ------------------------------------------------------------------------ */
/* Convenience macros                                                       */
/* ------------------------------------------------------------------------ */
/* Each Real operation under its name without "Real", filling callerFile and
 * callerLine with the calling site's __FILE__ and __LINE__; the other
 * arguments follow as in the operation, the exception record last:
 *   vrkNode_appendChild(parent, child, &exception)
 * is vrkNodeReal_appendChild(__FILE__, __LINE__, parent, child, &exception).
 * They are macros only: nothing is exported under these names. */

#define vrkDOM_createDocument(...) vrkDOMReal_createDocument(__FILE__, __LINE__, __VA_ARGS__)
#define vrkDOM_createEANode(...) vrkDOMReal_createEANode(__FILE__, __LINE__, __VA_ARGS__)
#define vrkDOM_createEANodeNSP(...) vrkDOMReal_createEANodeNSP(__FILE__, __LINE__, __VA_ARGS__)
#define vrkDOM_createEANodeNS(...) vrkDOMReal_createEANodeNS(__FILE__, __LINE__, __VA_ARGS__)
#define vrkDOM_createTextNode(...) vrkDOMReal_createTextNode(__FILE__, __LINE__, __VA_ARGS__)
#define vrkDOM_createCDATASection(...) vrkDOMReal_createCDATASection(__FILE__, __LINE__, __VA_ARGS__)
#define vrkDOM_createProcessingInstruction(...) \
    vrkDOMReal_createProcessingInstruction(__FILE__, __LINE__, __VA_ARGS__)
#define vrkNode_setNodeValue(...) vrkNodeReal_setNodeValue(__FILE__, __LINE__, __VA_ARGS__)
#define vrkNode_appendChild(...) vrkNodeReal_appendChild(__FILE__, __LINE__, __VA_ARGS__)
#define vrkNode_insertBefore(...) vrkNodeReal_insertBefore(__FILE__, __LINE__, __VA_ARGS__)
#define vrkNode_replaceChild(...) vrkNodeReal_replaceChild(__FILE__, __LINE__, __VA_ARGS__)
#define vrkNode_removeChild(...) vrkNodeReal_removeChild(__FILE__, __LINE__, __VA_ARGS__)
#define vrkNode_setPrefix(...) vrkNodeReal_setPrefix(__FILE__, __LINE__, __VA_ARGS__)
#define vrkNode_normalize(...) vrkNodeReal_normalize(__FILE__, __LINE__, __VA_ARGS__)
#define vrkNode_cloneNode(...) vrkNodeReal_cloneNode(__FILE__, __LINE__, __VA_ARGS__)
#define vrkElement_setAttributeNode(...) vrkElementReal_setAttributeNode(__FILE__, __LINE__, __VA_ARGS__)
#define vrkElement_setAttributeNodeNS(...) vrkElementReal_setAttributeNodeNS(__FILE__, __LINE__, __VA_ARGS__)

/* ======================================================================== */
/* Exported internals                                                       */
/* ======================================================================== */
/* The parser's and the serializer's building blocks: exported, documented
 * and kept as stable as the rest, for callers that run a production or the
 * serializer by themselves and for the library's own tests.  Parsing,
 * editing and writing a tree need none of it. */

/* ------------------------------------------------------------------------ */
/* Types of the internals                                                   */
/* ------------------------------------------------------------------------ */

/* A stretch of parsed text: `start` is its first unit, `end` its last
 * (inclusive); an empty token has `end` one unit below `start`.  It owns
 * nothing and is valid only while the parse runs. */
typedef struct Token {
    UniChar *start;
    UniChar *end;
} Token;

/* One namespace declaration in scope during a parse, made by
 * pushNameSpaceStack and freed by popNameSpaceStack; it belongs to the stack
 * and copies nothing.  depth: the context's depth at the push.  prefix: the
 * declared prefix in the text, null (length 0) for the default namespace.
 * uri: the raw value in the text, references unresolved.  next: the entry
 * pushed before, null at the bottom. */
typedef struct NameSpaceStackEntry {
    int32_t                     depth;
    UniChar                    *prefix;
    int32_t                     prefixLength;
    UniChar                    *uri;
    int32_t                     uriLength;
    struct NameSpaceStackEntry *next;
} NameSpaceStackEntry;

/* The parser's working state, one per parse, owned by whoever runs the
 * productions (vrkDOM_parse keeps it in its own frame).  Fields:
 *   textStart:      first unit of the text, byte order mark included; every
 *                   offset counts from here.  The context never frees it.
 *   textEnd:        the last unit of the text (a zero unit always follows it).
 *   cursor:         the next unit to read.
 *   document:       the tree being built; null until it is made and after
 *                   Produce_document has destroyed it.
 *   current:        the node that receives children: the document, or the
 *                   innermost element whose end has not been reached.
 *   depth:          number of elements whose content is being read.
 *   nameSpaceStack: the declaration pushed last, null when none is in scope.
 *   error:          the first error of the parse; code 0 while there is none.
 *                   The parser's tree operations report straight into it. */
typedef struct ProduceContext {
    UniChar             *textStart;
    UniChar             *textEnd;
    UniChar             *cursor;
    vrkNode             *document;
    vrkNode             *current;
    int32_t              depth;
    NameSpaceStackEntry *nameSpaceStack;
    vrkParseError        error;
} ProduceContext;

/* One predefined entity reference: the character, and the reference as
 * written ("&lt;") with its length in units.  The library's rows are the
 * static predefEnt. */
typedef struct PredefEntity {
    UniChar        character;
    int32_t        length;
    const UniChar *text;
} PredefEntity;

/* Scratch buffer of one serialization: `capacity` + 1 bytes at `data`, a
 * malloc'ed block that belongs to whoever made the buffer and is freed by
 * them (vrkDOM_serialize makes and frees its own). */
typedef struct SerializeBuffer {
    char   *data;
    int32_t capacity;
} SerializeBuffer;

/* ------------------------------------------------------------------------ */
/* Tokens                                                                   */
/* ------------------------------------------------------------------------ */

/* New string holding the units of a token of at least one unit (caller
 * frees), or null when memory runs out. */
UniChar *tokenToString(const Token *token);

/* ------------------------------------------------------------------------ */
/* Productions                                                              */
/* ------------------------------------------------------------------------ */

/* Results of every Produce_ function. */
#define PRODUCE_OK       0 /* matched; the cursor is behind what it consumed  */
#define PRODUCE_NO_MATCH 1 /* not this production; the cursor is unmoved     */
#define PRODUCE_ERROR    2 /* failed; the first error is in context->error   */

/* Productions.  Each returns PRODUCE_OK, PRODUCE_NO_MATCH or PRODUCE_ERROR
 * and records the first error in context->error.  PRODUCE_NO_MATCH leaves
 * the cursor unmoved, but for Produce_CharData at the end of the text.
 *
 * Ownership: a node a production makes goes into the tree at once (appended
 * to context->current, or an attribute set on it) and belongs to
 * context->document; beside the nodes only namespace stack entries are
 * allocated.  After PRODUCE_ERROR nothing is unwound (Produce_Attribute only
 * destroys a node it could not set): current, depth and the stack stay as
 * they are, and whoever runs the parse sets depth to 0, calls
 * popNameSpaceStack and destroys the document (Produce_document does this
 * for the root).  While context->error holds a code the tree operations
 * refuse, so a production that needs a node returns PRODUCE_ERROR without
 * recording anything.
 *
 * Nesting depth: Produce_content reads the elements nested in it with a
 * loop, not by calling Produce_element for each child, so the depth of a
 * document is limited by memory alone, never by the stack.  Each open
 * element costs nothing beyond its node: its start tag's name is matched
 * against the node's own name.  vrkDOM_destroyNode releases a tree of any
 * depth in the same way. */
/* Parses the zero-terminated text at textStart (the only field it needs)
 * into context->document, which is the caller's after PRODUCE_OK.
 * PRODUCE_ERROR (never NO_MATCH) leaves the stack empty and document null,
 * or still set for the caller to destroy when the prolog failed.  Text
 * behind the root and the comments, PIs and white space after it is not
 * examined. */
int32_t Produce_document(ProduceContext *context);
/* An optional XML declaration, then comments, PIs (nodes under
 * context->current) and white space.  PRODUCE_OK or PRODUCE_ERROR. */
int32_t Produce_prolog(ProduceContext *context);
/* One element, start tag to end tag, appended with its subtree to
 * context->current.  NO_MATCH when no start tag begins here; ERR_END_TAG
 * when the end tag is missing or its qualified name differs (exactly). */
int32_t Produce_element(ProduceContext *context);
/* The content of the element context->current, up to where nothing matches
 * (its own end tag is left unread); nested elements are read whole here.
 * PRODUCE_OK or PRODUCE_ERROR; an error of a text run stays pending. */
int32_t Produce_content(ProduceContext *context);
/* A comment, a processing instruction (a node under context->current) or
 * white space. */
int32_t Produce_Misc(ProduceContext *context);
/* Skips a comment; no node is made.  ERR_UNTERMINATED when the text ends
 * first, ERR_COMMENT_HYPHENS at a "--" that no > follows. */
int32_t Produce_Comment(ProduceContext *context);
/* A processing instruction, appended to context->current with copies of its
 * target and data (the white space between them dropped).  ERR_BAD_PI for a
 * missing or refused target and for a missing "?>". */
int32_t Produce_PI(ProduceContext *context);
/* A Name, the cursor behind it.  NO_MATCH (cursor unmoved) for no name and
 * for xml, in any case, followed by white space.  Records nothing. */
int32_t Produce_PITarget(ProduceContext *context);
/* "<?xml", version info, optional encoding and standalone parts, "?>";
 * judged, then dropped.  NO_MATCH without "<?xml"; ERR_XMLDECL_VERSION,
 * ERR_XMLDECL_END; an error of an optional part stays pending. */
int32_t Produce_XMLDecl(ProduceContext *context);
/* White space, "version", Eq and a quoted VersionNum.  NO_MATCH (cursor
 * unmoved) without the white space or the keyword; then ERR_EQ_MISSING,
 * ERR_OPENING_QUOTE, ERR_DECL_VALUE or ERR_CLOSING_QUOTE. */
int32_t Produce_VersionInfo(ProduceContext *context);
/* One or more of a-z, A-Z, 0-9, _ . : -; nothing else is checked or kept.
 * Records nothing. */
int32_t Produce_VersionNum(ProduceContext *context);
/* White space, "encoding", Eq and a quoted EncName.  NO_MATCH as for the
 * version; then ERR_EQ_MISSING, ERR_ENCODING_DECL (no opening quote), the
 * EncName's error or ERR_CLOSING_QUOTE. */
int32_t Produce_EncodingDecl(ProduceContext *context);
/* A run of a-z, A-Z, 0-9, _ . -, maybe empty.  At 5 or 6 units it must be
 * UTF-8 or UTF-16 (folded through toupper), else ERR_BAD_ENCODING at its
 * start; other lengths pass unjudged.  Never NO_MATCH. */
int32_t Produce_EncName(ProduceContext *context);
/* White space, "standalone", Eq and a quoted yes or no (not kept).  NO_MATCH
 * as for the version; then ERR_EQ_MISSING, ERR_OPENING_QUOTE, ERR_DECL_VALUE
 * or ERR_CLOSING_QUOTE. */
int32_t Produce_SDDecl(ProduceContext *context);
/* A run of text up to <, & or "]]>", appended to context->current as a text
 * node.  NO_MATCH, nothing made, for an empty run (cursor unmoved) and for a
 * run that the end of the text stops (cursor on the terminator). */
int32_t Produce_CharData(ProduceContext *context);
/* A CDATA section, appended to context->current with a copy of what stands
 * between its delimiters.  NO_MATCH without "<![CDATA["; ERR_UNTERMINATED
 * without "]]>". */
int32_t Produce_CDSect(ProduceContext *context);
/* "<![CDATA[", the cursor behind it; else NO_MATCH.  Records nothing. */
int32_t Produce_CDStart(ProduceContext *context);
/* Moves the cursor onto the next "]]>".  Without one: ERR_UNTERMINATED, the
 * cursor on the terminator. */
int32_t Produce_CData(ProduceContext *context);
/* "]]>", the cursor behind it; else NO_MATCH.  Records nothing. */
int32_t Produce_CDEnd(ProduceContext *context);
/* One attribute, set on the element context->current with its namespace not
 * yet resolved; a declaration is also pushed, with its raw value.  NO_MATCH
 * (cursor unmoved) when no name begins here.  A repeated name records
 * ERR_DUPLICATE_ATTRIBUTE, the new node replacing the old, which is
 * destroyed; on any other failure no new node is left. */
int32_t Produce_Attribute(ProduceContext *context);
/* From here through Produce_QName: recognisers that read only the cursor and
 * textEnd of the context, allocate and record nothing, and give PRODUCE_OK
 * or PRODUCE_NO_MATCH. */
/* One unit of the BaseChar class; the cursor moves one unit on. */
int32_t Produce_BaseChar(ProduceContext *context);
/* One unit of the Ideographic class. */
int32_t Produce_Ideographic(ProduceContext *context);
/* One unit of the CombiningChar class. */
int32_t Produce_CombiningChar(ProduceContext *context);
/* One unit of the Digit class (more than 0-9). */
int32_t Produce_Digit(ProduceContext *context);
/* One unit of the Extender class. */
int32_t Produce_Extender(ProduceContext *context);
/* One BaseChar or Ideographic unit. */
int32_t Produce_Letter(ProduceContext *context);
/* One Letter, Digit, CombiningChar, Extender, -, . or _ unit; no match once
 * the cursor is past textEnd. */
int32_t Produce_NCNameChar(ProduceContext *context);
/* An NCNameChar, or a colon (read without the textEnd bound). */
int32_t Produce_NameChar(ProduceContext *context);
/* A Letter or _, then NCNameChars; the cursor moves behind the name. */
int32_t Produce_NCName(ProduceContext *context);
/* An NCName: the part of a QName ahead of its colon. */
int32_t Produce_Prefix(ProduceContext *context);
/* An NCName: the part of a QName behind its colon, or all of it. */
int32_t Produce_LocalPart(ProduceContext *context);
/* A Letter, _ or colon, then NameChars: a:b:c is one Name. */
int32_t Produce_Name(ProduceContext *context);
/* One or more of 0x20, 0x09, 0x0D, 0x0A. */
int32_t Produce_S(ProduceContext *context);
/* An =, with optional white space on both sides. */
int32_t Produce_Eq(ProduceContext *context);
/* Prefix ":" LocalPart, or LocalPart alone, into the three tokens; prefix
 * has both pointers null when there is no colon, and a second colon ends the
 * name.  The tokens mean nothing after NO_MATCH. */
int32_t Produce_QName(ProduceContext *context, Token *qualified, Token *prefix, Token *local);
/* A start or empty-element tag.  Its element, with the attributes read, is
 * appended to context->current and made current; an attribute that fails
 * leaves the element so appended with the attributes before it, none with
 * a namespace name.  Namespaces are resolved once the attributes are read,
 * their errors left pending.  *hasContent is 1 after >, or 0
 * after /> (current then back at the parent); name is the qualified name.
 * NO_MATCH (cursor unmoved) unless < and a QName begin here; ERR_TAG_END
 * when neither > nor /> ends the tag. */
int32_t Produce_STagOREmptyElemTag(ProduceContext *context, Token *name, int32_t *hasContent);
/* An end tag: "</", a QName, optional white space, ">"; name gets the
 * qualified name, compared with nothing here.  NO_MATCH (cursor unmoved)
 * without "</"; ERR_ETAG_NAME without a name, ERR_TAG_END without >. */
int32_t Produce_ETag(ProduceContext *context, Token *name);
/* A declaration's name: "xmlns:" NCName (prefix xmlns, local the declared
 * prefix) or "xmlns" (prefix start null, name and local xmlns).  NO_MATCH
 * (cursor unmoved) otherwise; ERR_NSATT_NAME from the first form. */
int32_t Produce_NSAttName(ProduceContext *context, Token *name, Token *prefix, Token *local);
/* "xmlns:" and an NCName: name the whole, prefix xmlns, local the NCName.
 * NO_MATCH (cursor unmoved) without "xmlns:"; ERR_NSATT_NAME, behind the
 * colon, when no NCName follows. */
int32_t Produce_PrefixedAttName(ProduceContext *context, Token *name, Token *prefix,
                                Token *local);
/* The five units "xmlns" into token, whatever follows them; else NO_MATCH
 * (cursor unmoved).  Records nothing. */
int32_t Produce_DefaultAttName(ProduceContext *context, Token *token);
/* A quoted value; value gets the units between the quotes, references
 * checked but not resolved.  NO_MATCH (cursor unmoved) without a quote;
 * ERR_ATTVALUE_END at a <, at a & that begins no reference and at the end of
 * the text; ERR_CHAR_REF for a bad character reference. */
int32_t Produce_AttValue(ProduceContext *context, Token *value);
/* A predefined entity or character reference, the cursor behind it.  Mode 1
 * (content) appends a one-unit text node to context->current; other modes
 * make nothing.  NO_MATCH (cursor unmoved) when neither form begins here;
 * ERR_CHAR_REF for a bad character reference. */
int32_t Produce_Reference(ProduceContext *context, int32_t mode);
/* One of the five references of predefEnt, matched exactly: *out gets its
 * character and the cursor moves behind it.  Else NO_MATCH, *out untouched.
 * Records nothing. */
int32_t Produce_EntityRef(ProduceContext *context, UniChar *out);
/* "&#" decimal or "&#x" hexadecimal digits and ";": *out gets the value
 * (wrapped to 32 bits), which must pass Produce_Char.  NO_MATCH (cursor
 * unmoved) without "&#"; else ERR_CHAR_REF, *out untouched: on the unit
 * ending the digits when it is no ;, otherwise behind the ;. */
int32_t Produce_CharRef(ProduceContext *context, UniChar *out);
/* PRODUCE_OK when value is 0x09, 0x0A, 0x0D, 0x20-0xD7FF or 0xE000-0xFFFD,
 * else PRODUCE_NO_MATCH; reads no text. */
int32_t Produce_Char(uint32_t value);

/* Resolves the references in a malloc'ed attribute value in place; returns
 * the string to keep (possibly moved: the block is reallocated once to its
 * new length when s holds a &), or null when that failed, s then still
 * being the caller's.  A unit a reference produced is plain text; a & that
 * begins no reference (the parser never hands one in) is kept as it is. */
UniChar *AttrValueRefResolve(UniChar *s);

/* ------------------------------------------------------------------------ */
/* Namespace stack                                                          */
/* ------------------------------------------------------------------------ */

/* Pushes a namespace declaration on the context's stack: 1, or 0 when the
 * entry cannot be allocated (the stack unchanged).  The entry is allocated
 * with a little room of the library's own behind the public record: every
 * entry on a stack must come from this function.
 *
 * Cost of lookups: the default namespace (prefix null) is found at once,
 * however many declarations are in scope, and so is any of the four
 * prefixes looked up or declared most recently.  Another prefix is found by
 * a walk from the innermost declaration outward: a document that declares n
 * prefixes in nested scope and uses more than four of the outermost ones
 * in turn, in each of m elements, costs on the order of n * m steps. */
int32_t  pushNameSpaceStack(ProduceContext *context, const Token *prefix, const Token *uri);
/* Pops and frees every top entry whose depth is at least the context's
 * depth (signed); with depth 0 that is every entry the parser pushed. */
void     popNameSpaceStack(ProduceContext *context);
/* Looks a zero-terminated prefix (null: the default namespace) up: 1 and
 * *out, or 0 with *out untouched.  xml and xmlns, case folded, answer with
 * the reserved names first.  *out points into the pushed text or at static
 * data, and is not to be freed. */
int32_t  getNameSpaceURI(ProduceContext *context, const UniChar *prefix, Token *out);
/* Fills namespaceURI (and a missing localName) of a parsed node with new
 * strings the node owns: 1 done (an attribute without a prefix: untouched),
 * 0 no namespace, or ERR_UNDECLARED_PREFIX or ERR_OUT_OF_MEMORY recorded in
 * the context. */
int32_t  resolveNameSpace(ProduceContext *context, vrkNode *node);

/* ------------------------------------------------------------------------ */
/* Serializer internals                                                     */
/* ------------------------------------------------------------------------ */

/* The five predefined entity references, in the order <, >, &, ', ".  All
 * the data here is static and read-only: never written, never freed. */
extern const PredefEntity predefEnt[5];
/* "&lt;", "&gt;", "&amp;", "&apos;", "&quot;" as zero-terminated strings. */
extern const UniChar xmllt[], xmlgt[], xmlamp[], xmlapos[], xmlquot[];
/* "xmlns"; the namespace names reserved for the prefixes xml and xmlns. */
extern const UniChar UCSxmlns[], XML10_NAMESPACE[], XMLNS_URI[];

/* Writes node and its following siblings, no header, using buffer, which
 * must hold a malloc'ed block of capacity + 1 bytes (it may be reallocated,
 * and stays the caller's to free).  1 when all was written; 0 when the
 * buffer could not grow (UTF-8 only; what came before stays written), and
 * for any encoding but ENCODING_UTF8 and ENCODING_UTF16 (nothing written). */
int32_t DOM_serializeImpl(const vrkNode *node, int32_t encoding, SerializeBuffer *buffer,
                          vrkWriteFunc write, void *userData);

/* ------------------------------------------------------------------------ */
/* Debug print                                                              */
/* ------------------------------------------------------------------------ */

/* Prints a line on standard output for each broken link in the child lists
 * of the tree (a sound tree prints nothing).  The walk does not recurse, so
 * any depth is checked.  On links so broken that following them would never
 * end (a cycle), it prints "Links form a cycle; walk stopped\n" and stops. */
void    DOM_checkIntegrity(const vrkNode *node);
/* Checks the child list that begins at firstChild, as children of parent,
 * and everything below it; prints as DOM_checkIntegrity does.  A null
 * firstChild does nothing; the links of parent itself are not checked. */
void    DOM_checkIntegrityInternal(const vrkNode *parent, const vrkNode *firstChild);
/* vfprintf onto stdout; returns what vfprintf returns. */
int     DebugPrint(const char *format, ...);

#ifdef __cplusplus
}
#endif

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#endif /* VRKXML_H */
