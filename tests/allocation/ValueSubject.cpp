#include "ValueSubject.h"

#include "support/LayoutFiles.h"

#include <foundation/ks_basic.h>

#include <initializer_list>
#include <sstream>

namespace kestrel::graph::test
{

namespace
{

Array<KS_String, _Wa> listOf(std::initializer_list<char const*> texts)
{
    Array<KS_String, _Wa> list;
    for (char const* text : texts) list.append(text);
    return list;
}

void write(std::ostream& out, Array<KS_String, _Wa> const& list)
{
    out << "[";
    for (KS_String const& text : list) out << std::string(text) << "; ";
    out << "]\n";
}

void write(std::ostream& out, MessageHandler const& handler)
{
    for (Message const& message : handler.getMessages())
        out << message.getLevel() << " " << std::string(message.getTitle()) << " "
            << std::string(message.getContent()) << "\n";
}

void write(std::ostream& out, GraphSettings const& settings)
{
    for (KS_String const* text : {&settings.getDefaultRootName(), &settings.getIconsFolder(),
                                  &settings.getMenuStyle(), &settings.getGraphHelpCss()})
        out << std::string(*text) << "|";
    out << settings.getBackgroundTopColor().red << "|" << settings.getGridSize() << "|"
        << settings.getGraphAutomaticLabelingBordersMaxY() << "\n";
}

} // namespace

ValueSubject::ValueSubject()
    : otherList(listOf({"one of them", "two of them", "three", "four", "five"})),
      fourTexts(listOf({"some", "other", "texts", "in a list"})),
      raw(ScratchFile::instance().get()),
      endian(ScratchFile::instance().get())
{
    for (unsigned int i = 0; i < 4; ++i) list.append(otherList[i]);
    for (int i = 0; i < 4; ++i) pointers.append(&numbers[i]);
    handler.setVerbosityLevel(5);
    for (int level = 1; level <= 4; ++level) handler.push(Message(level, "a title"));
    metaClass = std::make_unique<KS_MetaClass<KS_Class>>("Derived", &metaClass_KS_Class, "A class.");
    settings.setMenuStyle("a menu style");
    settings.setIconsFolder("icons/of/a/host");
    settings.setGridSize(7);
    settings.setGraphAutomaticLabelingBordersMaxY(7);
    settings.setBackgroundTopColor(Color4<float>(1, 1, 1, 1));
    stream = std::make_unique<FileStream>(ScratchFile::instance().get());
    spareRaw = std::make_unique<FileStreamRaw>(ScratchFile::instance().get());
    spareEndian = std::make_unique<FileStreamEndian>(ScratchFile::instance().get());
}

std::string ValueSubject::state() const
{
    std::ostringstream lines;
    lines << std::string(text) << "\n";
    write(lines, list);
    for (int const* number : pointers) lines << (number != nullptr ? *number : -1) << " ";
    write(lines, handler);
    write(lines, otherHandler);
    lines << message.getLevel() << std::string(message.getTitle()) << std::string(message.getContent())
          << "\n";
    write(lines, settings);
    return lines.str();
}

std::string ValueSubject::results() const
{
    std::ostringstream lines;
    lines << out.number << " " << std::string(out.text) << " ";
    write(lines, out.texts);
    lines << out.pointers.size();
    lines << (out.madeText ? std::string(*out.madeText) : "-") << (out.madeObject ? " object " : " - ")
          << (out.madeMetaClass ? std::string(out.madeMetaClass->getName()) : "-") << " "
          << (out.madeMessage ? std::string(out.madeMessage->getContent()) : "-") << "\n";
    if (out.madeSettings) write(lines, *out.madeSettings);
    return lines.str();
}

void ValueSubject::expectWhole() const
{
    EXPECT_EQ(std::string(text), text.c_str());
    EXPECT_LE(text.size(), text.capacity());
    EXPECT_LE(list.size(), list.capacity());
    EXPECT_LE(pointers.size(), pointers.capacity());
    for (KS_String const& element : list) EXPECT_EQ(std::string(element), element.c_str());
}

} // namespace kestrel::graph::test
