// The reserved namespace strings.
#include "unistring/export.h"

VRK_EXPORT const UniChar UCSxmlns[] = {'x', 'm', 'l', 'n', 's', 0};

// http://www.w3.org/XML/1998/namespace
VRK_EXPORT const UniChar XML10_NAMESPACE[] = {
    'h', 't', 't', 'p', ':', '/', '/', 'w', 'w', 'w', '.', 'w', '3', '.', 'o', 'r', 'g', '/',
    'X', 'M', 'L', '/', '1', '9', '9', '8', '/', 'n', 'a', 'm', 'e', 's', 'p', 'a', 'c', 'e', 0};

// http://www.w3.org/2000/xmlns/
VRK_EXPORT const UniChar XMLNS_URI[] = {'h', 't', 't', 'p', ':', '/', '/', 'w', 'w', 'w',
                                        '.', 'w', '3', '.', 'o', 'r', 'g', '/', '2', '0',
                                        '0', '0', '/', 'x', 'm', 'l', 'n', 's', '/', 0};
