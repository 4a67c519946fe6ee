#include "Operation.h"

#include <cstring>
#include <istream>
#include <iterator>
#include <ostream>
#include <sstream>
#include <stdexcept>

namespace kestrel::graph::test::model
{

namespace
{

char const hexDigits[] = "0123456789ABCDEF";

void writeText(std::ostream& out, std::string const& text)
{
    out << '"';
    for (char const letter : text)
    {
        unsigned char const byte = static_cast<unsigned char>(letter);
        if (letter == '"' || letter == '\\' || byte < 0x20 || byte >= 0x7F)
            out << "\\x" << hexDigits[byte / 16] << hexDigits[byte % 16];
        else
            out << letter;
    }
    out << '"';
}

void writeReference(std::ostream& out, Reference const& reference)
{
    if (reference.operation == none)
        out << '-';
    else
        out << reference.operation << '.' << reference.count;
}

[[noreturn]] void refuse(std::string const& line)
{
    throw std::runtime_error("this is no operation: " + line);
}

/// The rest of one line.
class Line
{
public:
    explicit Line(std::string const& text) : text_(text), in_(text) {}

    template <class Value>
    Value value()
    {
        Value read{};
        if (!(in_ >> read)) refuse(text_);
        return read;
    }

    Reference reference()
    {
        std::istringstream word(value<std::string>());
        Reference read;
        char dot = '\0';
        if (word.str() == "-") return read;
        if (!(word >> read.operation >> dot >> read.count) || dot != '.') refuse(text_);
        return read;
    }

    std::string text()
    {
        if (value<char>() != '"') refuse(text_);
        std::string read;
        for (char letter = get(); letter != '"'; letter = get())
        {
            if (letter == '\\')
            {
                if (get() != 'x') refuse(text_);
                int const high = hexDigit();
                letter = static_cast<char>(high * 16 + hexDigit());
            }
            read += letter;
        }
        return read;
    }

    bool isAtEnd() { return (in_ >> std::ws).eof(); }

private:
    char get()
    {
        int const letter = in_.get();
        if (letter == std::istringstream::traits_type::eof()) refuse(text_);
        return static_cast<char>(letter);
    }

    int hexDigit()
    {
        char const* const digit = std::strchr(hexDigits, get());
        if (digit == nullptr || *digit == '\0') refuse(text_);
        return static_cast<int>(digit - hexDigits);
    }

    std::string text_;
    std::istringstream in_;
};

Kind kindNamed(std::string const& name)
{
    for (std::size_t kind = 0; kind < kinds.size(); ++kind)
        if (name == kinds[kind].name) return static_cast<Kind>(kind);
    throw std::runtime_error("there is no operation " + name);
}

Operation parsedOperation(std::string const& text)
{
    Line line(text);
    Operation operation;
    operation.label = line.value<int>();
    operation.kind = kindNamed(line.value<std::string>());
    auto reference = operation.references.begin();
    auto number = operation.numbers.begin();
    auto string = operation.texts.begin();
    for (char const* kind = kinds[static_cast<std::size_t>(operation.kind)].signature; *kind != '\0'; ++kind)
    {
        switch (*kind)
        {
        case '#':
        case 'b':
            *number++ = line.value<unsigned int>();
            break;
        case 's':
            *string++ = line.text();
            break;
        case 'l':
        case 'k':
            while (!line.isAtEnd()) operation.list.push_back(line.reference());
            break;
        case 't':
            while (!line.isAtEnd()) operation.names.push_back(line.text());
            break;
        default:
            *reference++ = line.reference();
        }
    }
    if (!line.isAtEnd()) refuse(text);
    return operation;
}

Profile parsedProfile(std::string const& text)
{
    Line line(text);
    if (line.value<std::string>() != "profile") refuse(text);
    Profile profile;
    while (!line.isAtEnd())
    {
        std::string const word = line.value<std::string>();
        bool known = false;
        for (auto const& [name, flag] : profileWords)
        {
            if (word != name) continue;
            profile.*flag = true;
            known = true;
        }
        if (!known) refuse(text);
    }
    return profile;
}

} // namespace

std::ostream& operator<<(std::ostream& out, Operation const& operation)
{
    KindOfOperation const& kind = kinds[static_cast<std::size_t>(operation.kind)];
    out << operation.label << ' ' << kind.name;
    auto reference = operation.references.begin();
    auto number = operation.numbers.begin();
    auto text = operation.texts.begin();
    for (char const* letter = kind.signature; *letter != '\0'; ++letter)
    {
        switch (*letter)
        {
        case '#':
        case 'b':
            out << ' ' << *number++;
            break;
        case 's':
            writeText(out << ' ', *text++);
            break;
        case 'l':
        case 'k':
            for (Reference const& each : operation.list) writeReference(out << ' ', each);
            break;
        case 't':
            for (std::string const& each : operation.names) writeText(out << ' ', each);
            break;
        default:
            writeReference(out << ' ', *reference++);
        }
    }
    return out;
}

std::ostream& operator<<(std::ostream& out, Sequence const& sequence)
{
    out << "profile";
    for (auto const& [name, flag] : profileWords)
        if (sequence.profile.*flag) out << ' ' << name;
    out << '\n';
    for (Operation const& operation : sequence.operations) out << operation << '\n';
    return out;
}

Sequence parsedSequence(std::istream& in)
{
    Sequence sequence;
    bool hasProfile = false;
    for (std::string line; std::getline(in, line);)
    {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line.starts_with("//")) continue;
        if (hasProfile)
            sequence.operations.push_back(parsedOperation(line));
        else
            sequence.profile = parsedProfile(line);
        hasProfile = true;
    }
    return sequence;
}

} // namespace kestrel::graph::test::model
