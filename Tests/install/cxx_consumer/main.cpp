// A C++ program built against the installed library and its C++ layer,
// through the CMake package and through pkg-config.
#include <cstdio>
#include <string>

#include <vrkxml.hpp>

int main() {
    const std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\xF0\x9F\x98\x80</root>\n";
    auto parsed = vrkxml::parse(text);
    if (!parsed) {
        std::printf("%s at %lld:%lld\n", parsed.error().message.c_str(),
                    static_cast<long long>(parsed.error().line),
                    static_cast<long long>(parsed.error().column));
        return 1;
    }
    auto item = vrkxml::makeElement("item");
    if (!item || !vrkxml::append(parsed.value().root(), item.value())) return 1;
    const auto out = vrkxml::serialize(parsed.value().node(), vrkxml::Encoding::utf8);
    std::printf("%s", out ? out.value().c_str() : out.error().message.c_str());
    const bool found = vrkxml::findChild(parsed.value().root(), "item") != nullptr;
    return found && out &&
                   out.value().find("<root>\xF0\x9F\x98\x80<item></item></root>") !=
                       std::string::npos
               ? 0
               : 1;
}
