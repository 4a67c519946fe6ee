/// @file
#pragma once

#if defined(__GLIBC__)

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace kestrel::graph::test
{

/// A locale in which 0xE4 is the small letter of 0xC4, 0x9A that of 0x80 and, much as in Turkish, 0xFD that
/// of I, unless only the letters above ASCII are to differ. It is made by the system's localedef, since a
/// bare system has no locale that has such letters; `isThere` tells whether that worked.
class TestLocale
{
public:
    enum class Letters
    {
        all,
        aboveAscii
    };

    explicit TestLocale(Letters letters = Letters::all)
        : letters_(letters),
          folder_(::testing::TempDir() + "ks_graph_" + std::to_string(std::random_device{}()))
    {
        std::filesystem::create_directories(folder_);
        writeCharacters();
        writeLetters();
        std::string const front = "localedef -c --no-archive -i '" + folder_;
        std::string const command =
            front + "/letters' -f '" + folder_ + "/characters' '" + folder_ + "/test' 2>/dev/null";
        [[maybe_unused]] int const warned = std::system(command.c_str());
        ::setenv("LOCPATH", folder_.c_str(), 1);
        isThere_ = enter();
        leave();
    }

    ~TestLocale()
    {
        leave();
        ::unsetenv("LOCPATH");
        std::filesystem::remove_all(folder_);
    }

    TestLocale(TestLocale const&) = delete;
    TestLocale& operator=(TestLocale const&) = delete;

    bool isThere() const { return isThere_; }
    bool enter() { return std::setlocale(LC_CTYPE, "test") != nullptr; }
    void leave() { std::setlocale(LC_CTYPE, "C"); }

private:
    static std::string characterName(unsigned int code)
    {
        char name[16];
        std::snprintf(name, sizeof(name), "<U%04X>", code);
        return name;
    }

    void writeCharacters() const
    {
        std::ofstream file(folder_ + "/characters");
        file << "<code_set_name> TEST-8\n<comment_char> %\n<escape_char> /\n<mb_cur_min> 1\n<mb_cur_max> "
                "1\nCHARMAP\n";
        for (unsigned int code = 0; code <= 0xFF; ++code)
        {
            char byte[8];
            std::snprintf(byte, sizeof(byte), "/x%02x", code);
            file << characterName(code) << ' ' << byte << " c\n";
        }
        file << "END CHARMAP\n";
    }

    unsigned int smallLetter(unsigned int capital) const
    {
        switch (capital)
        {
        case 0x80:
            return 0x9A;
        case 0xC4:
            return 0xE4;
        case 'I':
            return letters_ == Letters::all ? 0xFD : 'i';
        default:
            return capital + 'a' - 'A';
        }
    }

    void writeLetters() const
    {
        std::string upper;
        std::string lower = characterName(letters_ == Letters::all ? 'i' : 0xFD);
        std::string pairs;
        for (unsigned int capital = 'A'; capital <= 0xC4; ++capital)
        {
            if (capital > 'Z' && capital != 0x80 && capital != 0xC4) continue;
            std::string const name = characterName(capital);
            std::string const small = characterName(smallLetter(capital));
            upper.append(upper.empty() ? "" : ";").append(name);
            lower.append(";").append(small);
            pairs.append(pairs.empty() ? "(" : ";(").append(name).append(",").append(small).append(")");
        }
        std::ofstream file(folder_ + "/letters");
        file << "comment_char %\nescape_char /\nLC_CTYPE\nupper " << upper << "\nlower " << lower
             << "\ntolower " << pairs << "\nEND LC_CTYPE\n";
    }

    Letters letters_;
    std::string folder_;
    bool isThere_ = false;
};

} // namespace kestrel::graph::test

#endif
