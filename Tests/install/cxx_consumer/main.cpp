// A C++ program built against the installed library through its CMake package.
#include <cstdio>
#include <string>

#include <vrkxml.h>

int main() {
    vrkDOMException exception{};
    vrkNode *document = vrkDOMReal_createDocument(__FILE__, __LINE__, &exception);
    const UniChar name[] = {'r', 'o', 'o', 't'};
    vrkNode *root = vrkDOMReal_createEANode(__FILE__, __LINE__, ELEMENT_NODE, name, 4, &exception);
    vrkNodeReal_appendChild(__FILE__, __LINE__, document, root, &exception);
    std::string out;
    auto append = [](const void *data, uint32_t length, void *user) {
        static_cast<std::string *>(user)->append(static_cast<const char *>(data), length);
        return 0;
    };
    const int32_t written = vrkDOM_serialize(document, ENCODING_UTF8, append, &out);
    vrkDOM_destroyNode(document, 1);
    std::printf("%s", out.c_str());
    return exception.code == 0 && written == 1 && out.find("<root></root>") != std::string::npos ? 0 : 1;
}
