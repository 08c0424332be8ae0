#include "tests/tools/XmlCheck.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <vector>

namespace orva::test {

namespace {

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == ':' || c == '_';
}

class XmlReader {
public:
    explicit XmlReader(std::string_view document) : text(document) {}

    void ReadDocument() {
        RequireUtf8();
        SkipSpace();
        do {
            if (text[place] == '<') {
                ReadTag();
            } else {
                ReadText('<');
            }
        } while (!open.empty());
        SkipSpace();
        Require(place == text.size(), "text behind the root element");
    }

private:
    void Require(bool holds, const char* fault) const {
        if (!holds) {
            throw std::runtime_error(std::string(fault) + " at byte " + std::to_string(place));
        }
    }

    char Peek() const {
        Require(place < text.size(), "unexpected end");
        return text[place];
    }

    void Take(char expected) {
        Require(Peek() == expected, "unexpected character");
        ++place;
    }

    void SkipSpace() {
        while (place < text.size() && IsSpace(text[place])) {
            ++place;
        }
    }

    std::string ReadName() {
        const std::size_t begin = place;
        while (IsNameCharacter(Peek())) {
            ++place;
        }
        Require(place > begin, "no name");
        return std::string(text.substr(begin, place - begin));
    }

    /// Text up to `end`.
    void ReadText(char end) {
        for (; Peek() != end; ++place) {
            Require(text[place] != '<', "< in text");
            if (text[place] == '&') {
                const std::size_t length = text.substr(place).find(';');
                const std::set<std::string_view> entities = {"&lt", "&gt", "&amp", "&quot", "&apos"};
                Require(length != std::string_view::npos && entities.contains(text.substr(place, length)),
                        "unknown entity");
                place += length;
            }
        }
    }

    void ReadTag() {
        Take('<');
        if (Peek() == '/') {
            ++place;
            const std::string name = ReadName();
            Require(!open.empty() && open.back() == name, "wrong end tag");
            open.pop_back();
            SkipSpace();
            Take('>');
            return;
        }
        const std::string name = ReadName();
        std::set<std::string> attributes;
        while (IsSpace(Peek())) {
            SkipSpace();
            if (Peek() == '/' || Peek() == '>') {
                break;
            }
            Require(attributes.insert(ReadName()).second, "attribute given twice");
            Take('=');
            Take('"');
            ReadText('"');
            Take('"');
        }
        const bool isEmpty = Peek() == '/';
        place += isEmpty ? 1 : 0;
        Take('>');
        if (!isEmpty) {
            open.push_back(name);
        }
    }

    void RequireUtf8() {
        for (; place < text.size();) {
            const auto lead = static_cast<unsigned char>(text[place]);
            Require(lead >= 0x20 || IsSpace(text[place]), "control character");
            const std::size_t length = lead < 0x80   ? 1
                                       : lead < 0xC2 ? 0
                                       : lead < 0xE0 ? 2
                                       : lead < 0xF0 ? 3
                                                     : 4;
            Require(length > 0 && lead < 0xF5 && place + length <= text.size(), "no UTF-8");
            for (std::size_t i = 1; i < length; ++i) {
                Require((static_cast<unsigned char>(text[place + i]) & 0xC0) == 0x80, "no UTF-8");
            }
            place += length;
        }
        place = 0;
        Require(!text.empty(), "nothing");
    }

    std::string_view text;
    std::size_t place = 0;
    std::vector<std::string> open;
};

} // namespace

std::string XmlFault(std::string_view text) {
    try {
        XmlReader(text).ReadDocument();
    } catch (const std::runtime_error& fault) {
        return fault.what();
    }
    return {};
}

int CountElements(std::string_view text, std::string_view name) {
    const std::string begin = '<' + std::string(name);
    int count = 0;
    for (std::size_t place = text.find(begin); place != std::string_view::npos;
         place = text.find(begin, place + 1)) {
        const std::size_t behind = place + begin.size();
        count += behind < text.size() && !IsNameCharacter(text[behind]) ? 1 : 0;
    }
    return count;
}

} // namespace orva::test
