// The five predefined entity references, shared by the parser and the serializer.
#include "unistring/export.h"

VRK_EXPORT const UniChar xmllt[] = {'&', 'l', 't', ';', 0};
VRK_EXPORT const UniChar xmlgt[] = {'&', 'g', 't', ';', 0};
VRK_EXPORT const UniChar xmlamp[] = {'&', 'a', 'm', 'p', ';', 0};
VRK_EXPORT const UniChar xmlapos[] = {'&', 'a', 'p', 'o', 's', ';', 0};
VRK_EXPORT const UniChar xmlquot[] = {'&', 'q', 'u', 'o', 't', ';', 0};

VRK_EXPORT const PredefEntity predefEnt[5] = {
    {'<', 4, xmllt}, {'>', 4, xmlgt}, {'&', 5, xmlamp}, {'\'', 6, xmlapos}, {'"', 6, xmlquot},
};
