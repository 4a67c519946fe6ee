#include "ValueSubject.h"

#include "support/LayoutFiles.h"

#include <foundation/ks_basic.h>
#include <foundation/ks_fileio.h>

namespace kestrel::graph::test
{

namespace
{

using S = ValueSubject;
using enum Promise;
using Color = Color4<float>;
using Pair = Tuple2<float, float>;

// Of the file, which stands at its beginning and is long enough for every value.
std::FILE* rewound()
{
    ScratchFile::instance().endWith("0123456789ABCDEF");
    return ScratchFile::instance().get();
}

// A value of that type that is read, and one that is written.
template <class Stream, class Value>
void readValue(Stream& stream)
{
    rewound();
    Value value{};
    stream.readValue(value);
}

template <class Stream, class Value>
void writeValue(Stream& stream)
{
    rewound();
    stream.writeValue(Value{});
}

// Longer than the pieces in which it is read.
template <class Stream>
void readLongText(S& s, Stream& stream)
{
    static std::string const bytes = []
    {
        std::string const length(70000, 'x');
        ScratchFile& file = ScratchFile::instance();
        file.startOver();
        Stream writer(file.get());
        KS_String(length).write(writer);
        return file.written();
    }();
    ScratchFile::instance().endWith(bytes);
    s.out.number = s.text.read(stream);
}

template <class Value, class Access>
void accessValues(Access access)
{
    Value value{};
    access(&value, 1u, rewound());
}

} // namespace

std::vector<Operation<ValueSubject>> valueOperations()
{
    return {
        // Texts
        {"KS_String::KS_String()", allOrNothing,
         [](S& s) { s.out.madeText = std::make_unique<KS_String>(); }},
        {"KS_String::KS_String(char const*)", allOrNothing,
         [](S& s) { s.out.text = KS_String(s.other.c_str()); }},
        {"KS_String::KS_String(std::basic_string_view<char, std::char_traits<char>>)", allOrNothing,
         [](S& s) { s.out.text = KS_String(std::string_view(s.other)); }},
        {"KS_String::KS_String(KS_String const&)", allOrNothing,
         [](S& s) { s.out.text = KS_String(s.other); }},
        {"KS_String::operator=(KS_String const&)", allOrNothing, [](S& s) { s.text = s.other; }},
        {"KS_String::operator+(KS_String const&) const", allOrNothing,
         [](S& s) { s.out.text = s.text + s.other; }},
        {"KS_String::operator+(char const*) const", allOrNothing, [](S& s) { s.out.text = s.text + "more"; }},
        {"KS_String::operator+=(KS_String const&)", allOrNothing, [](S& s) { s.text += s.text; }},
        {"KS_String::operator+=(char const*)", allOrNothing, [](S& s) { s.text += "more"; }},
        {"KS_String::operator+=(char)", allOrNothing, [](S& s) { s.text += 'x'; }},
        {"KS_String::format(char const*, ...)", allOrNothing,
         [](S& s) { s.text.format("%s and %s", s.text.c_str(), s.other.c_str()); }},
        {"KS_String::appendFormat(char const*, ...)", allOrNothing,
         [](S& s) { s.text.appendFormat("%s%d", s.text.c_str(), 7); }},
        {"KS_String::replace(char const*, char const*)", allOrNothing,
         [](S& s) { s.out.number = s.text.replace("text", s.other.c_str()); }},
        {"KS_String::reserve(unsigned int, bool)", allOrNothing, [](S& s) { s.text.reserve(1000, true); }},
        {"KS_String::left(unsigned int) const", allOrNothing, [](S& s) { s.out.text = s.text.left(20); }},
        {"KS_String::mid(unsigned int, unsigned int) const", allOrNothing,
         [](S& s) { s.out.text = s.text.mid(3, 20); }},
        {"KS_String::toLower() const", allOrNothing, [](S& s) { s.out.text = s.text.toLower(); }},
        {"KS_String::concatenated(std::initializer_list<std::basic_string_view<char, "
         "std::char_traits<char>>>)",
         allOrNothing,
         [](S& s) {
             s.out.text = KS_String::concatenated({s.text, "and", s.other});
         }},
        {"KS_String::find(char) const", allocatesNothing, [](S& s) { s.out.number = s.text.find('x'); }},
        {"KS_String::findLast(char) const", allocatesNothing,
         [](S& s) { s.out.number = s.text.findLast('x'); }},
        {"KS_String::startsWith(KS_String const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.text.startsWith(s.prefix); }},
        {"KS_String::operator==", allocatesNothing, [](S& s) { s.out.number = s.text == s.other; }},
        {"KS_String::operator== of bytes", allocatesNothing,
         [](S& s) { s.out.number = s.text == "another"; }},
        {"KS_String::operator== of a view", allocatesNothing,
         [](S& s) { s.out.number = s.text == std::string_view(s.other); }},
        {"KS_String::KS_String of a text that is moved", allocatesNothing,
         [](S& s) { KS_String const moved(std::move(s.text)); }},
        {"KS_String::operator= of a text that is moved", allocatesNothing,
         [](S& s) { s.out.text = std::move(s.text); }},
        // A text whose read failed is empty.
        {"bool KS_String::read<FileStreamRaw>(FileStreamRaw&)", repeatCompletes,
         [](S& s) { readLongText(s, s.raw); }},
        {"bool KS_String::read<FileStreamEndian>(FileStreamEndian&)", repeatCompletes,
         [](S& s) { readLongText(s, s.endian); }},
        {"bool KS_String::write<FileStreamRaw>(FileStreamRaw&) const", allocatesNothing,
         [](S& s) { s.text.write(s.raw); }},
        {"bool KS_String::write<FileStreamEndian>(FileStreamEndian&) const", allocatesNothing,
         [](S& s) { s.text.write(s.endian); }},

        // Lists of values, and of pointers
        {"Array::append", allOrNothing, [](S& s) { s.list.append(s.other); }},
        {"Array::append of its own", allOrNothing, [](S& s) { s.list.append(s.list[0]); }},
        {"Array::appendRange", allOrNothing,
         [](S& s) { s.list.appendRange(s.otherList.data(), s.otherList.size()); }},
        {"Array::appendRange of its own", allOrNothing,
         [](S& s) { s.list.appendRange(s.list.data(), s.list.size()); }},
        {"Array::Array of another", allOrNothing, [](S& s) { s.out.texts = Array<KS_String, _Wa>(s.list); }},
        {"Array::operator= of more", allOrNothing, [](S& s) { s.list = s.otherList; }},
        {"Array::operator= of as many", allOrNothing, [](S& s) { s.list = s.fourTexts; }},
        {"Array::reserve", allOrNothing, [](S& s) { s.list.reserve(50, true); }},
        {"Array::setSize", allOrNothing, [](S& s) { s.list.setSize(9); }},
        {"Array::removeIf", allOrNothing,
         [](S& s) { s.list.removeIf([](KS_String const& text) { return text == "three"; }); }},
        {"Array::removeAll", allOrNothing, [](S& s) { s.out.number = s.list.removeAll(s.otherList[1]); }},
        {"Array::removeFast", allocatesNothing, [](S& s) { s.list.removeFast(s.otherList[1]); }},
        {"Array::find", allocatesNothing, [](S& s) { s.out.number = s.list.find(s.otherList[1]); }},
        {"Array::contains", allocatesNothing, [](S& s) { s.out.number = s.list.contains(s.otherList[1]); }},
        {"Array::clear", allocatesNothing, [](S& s) { s.list.clear(); }},
        {"ArrayOfPtr::append", allOrNothing, [](S& s) { s.pointers.append(&s.numbers[4]); }},
        {"ArrayOfPtr::appendRange", allOrNothing,
         [](S& s) { s.pointers.appendRange(s.pointers.data(), s.pointers.size()); }},
        {"ArrayOfPtr::ArrayOfPtr of another", allOrNothing,
         [](S& s) { s.out.pointers = ArrayOfPtr<int, KS_NO>(s.pointers); }},
        {"ArrayOfPtr::reserve", allOrNothing, [](S& s) { s.pointers.reserve(50, true); }},
        {"ArrayOfPtr::setSize", allOrNothing, [](S& s) { s.pointers.setSize(9); }},
        {"ArrayOfPtr::removeIf", allOrNothing,
         [](S& s) { s.pointers.removeIf([](int const* number) { return *number == 2; }); }},
        {"ArrayOfPtr::removeAll", allocatesNothing,
         [](S& s) { s.out.number = s.pointers.removeAll(&s.numbers[1]); }},
        {"ArrayOfPtr::removeFast", allocatesNothing, [](S& s) { s.pointers.removeFast(&s.numbers[1]); }},

        // Classes
        {"KS_Class::createInstance() const", allOrNothing,
         [](S& s) { s.out.madeObject.reset(s.object->createInstance()); }},
        {"KS_Class::getClassDescription() const", allocatesNothing,
         [](S& s) { s.out.number = s.object->getClassDescription().size(); }},
        {"KS_Class::getClassName() const", allocatesNothing,
         [](S& s) { s.out.number = s.object->getClassName().size(); }},
        {"KS_Class::getParentClassName() const", allocatesNothing,
         [](S& s) { s.out.number = s.object->getParentClassName().size(); }},
        {"KS_Class::isKindOf(KS_MetaClassBase const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.object->isKindOf(*s.metaClass); }},
        {"KS_Class::printMetaClass() const", allocatesNothing, [](S& s) { s.object->printMetaClass(); }},
        {"KS_Class::~KS_Class()", allocatesNothing, [](S& s) { s.object.reset(); }},
        {"KS_MetaClassBase::KS_MetaClassBase(KS_String const&, KS_MetaClassBase const*, KS_String const&)",
         allOrNothing,
         [](S& s) {
             s.out.madeMetaClass =
                 std::make_unique<KS_MetaClass<KS_Class>>(s.text, s.metaClass.get(), s.other);
         }},
        {"KS_MetaClassBase::isKindOf(KS_MetaClassBase const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.metaClass->isKindOf(metaClass_KS_Class); }},
        {"KS_MetaClassBase::printf() const", allocatesNothing, [](S& s) { s.metaClass->printf(); }},
        {"KS_MetaClassBase::~KS_MetaClassBase()", allocatesNothing, [](S& s) { s.metaClass.reset(); }},

        // Streams
        {"FileStream::read(void*, unsigned long)", allocatesNothing,
         [](S& s)
         {
             rewound();
             char byte = 0;
             s.out.number = static_cast<long>(s.stream->read(&byte, 1));
         }},
        {"FileStream::write(void const*, unsigned long)", allocatesNothing,
         [](S& s)
         {
             rewound();
             s.out.number = static_cast<long>(s.stream->write("x", 1));
         }},
        {"FileStream::flush()", allocatesNothing, [](S& s) { s.out.number = s.stream->flush(); }},
        {"FileStream::~FileStream()", allocatesNothing, [](S& s) { s.stream.reset(); }},
        {"FileStreamRaw::~FileStreamRaw()", allocatesNothing, [](S& s) { s.spareRaw.reset(); }},
        {"FileStreamRaw::readValue(Color4<float>&)", allocatesNothing,
         [](S& s) { readValue<FileStreamRaw, Color>(s.raw); }},
        {"FileStreamRaw::readValue(Tuple2<float, float>&)", allocatesNothing,
         [](S& s) { readValue<FileStreamRaw, Pair>(s.raw); }},
        {"FileStreamRaw::readValue(bool&)", allocatesNothing,
         [](S& s) { readValue<FileStreamRaw, bool>(s.raw); }},
        {"FileStreamRaw::readValue(float&)", allocatesNothing,
         [](S& s) { readValue<FileStreamRaw, float>(s.raw); }},
        {"FileStreamRaw::readValue(int&)", allocatesNothing,
         [](S& s) { readValue<FileStreamRaw, int>(s.raw); }},
        {"FileStreamRaw::readValue(unsigned int&)", allocatesNothing,
         [](S& s) { readValue<FileStreamRaw, unsigned int>(s.raw); }},
        {"FileStreamRaw::writeValue(Color4<float> const&)", allocatesNothing,
         [](S& s) { writeValue<FileStreamRaw, Color>(s.raw); }},
        {"FileStreamRaw::writeValue(Tuple2<float, float> const&)", allocatesNothing,
         [](S& s) { writeValue<FileStreamRaw, Pair>(s.raw); }},
        {"FileStreamRaw::writeValue(bool)", allocatesNothing,
         [](S& s) { writeValue<FileStreamRaw, bool>(s.raw); }},
        {"FileStreamRaw::writeValue(float)", allocatesNothing,
         [](S& s) { writeValue<FileStreamRaw, float>(s.raw); }},
        {"FileStreamRaw::writeValue(int)", allocatesNothing,
         [](S& s) { writeValue<FileStreamRaw, int>(s.raw); }},
        {"FileStreamRaw::writeValue(unsigned int)", allocatesNothing,
         [](S& s) { writeValue<FileStreamRaw, unsigned int>(s.raw); }},
        {"FileStreamEndian::~FileStreamEndian()", allocatesNothing, [](S& s) { s.spareEndian.reset(); }},
        {"FileStreamEndian::readValue(Color4<float>&)", allocatesNothing,
         [](S& s) { readValue<FileStreamEndian, Color>(s.endian); }},
        {"FileStreamEndian::readValue(Tuple2<float, float>&)", allocatesNothing,
         [](S& s) { readValue<FileStreamEndian, Pair>(s.endian); }},
        {"FileStreamEndian::readValue(bool&)", allocatesNothing,
         [](S& s) { readValue<FileStreamEndian, bool>(s.endian); }},
        {"FileStreamEndian::readValue(float&)", allocatesNothing,
         [](S& s) { readValue<FileStreamEndian, float>(s.endian); }},
        {"FileStreamEndian::readValue(int&)", allocatesNothing,
         [](S& s) { readValue<FileStreamEndian, int>(s.endian); }},
        {"FileStreamEndian::readValue(unsigned int&)", allocatesNothing,
         [](S& s) { readValue<FileStreamEndian, unsigned int>(s.endian); }},
        {"FileStreamEndian::writeValue(Color4<float> const&)", allocatesNothing,
         [](S& s) { writeValue<FileStreamEndian, Color>(s.endian); }},
        {"FileStreamEndian::writeValue(Tuple2<float, float> const&)", allocatesNothing,
         [](S& s) { writeValue<FileStreamEndian, Pair>(s.endian); }},
        {"FileStreamEndian::writeValue(bool)", allocatesNothing,
         [](S& s) { writeValue<FileStreamEndian, bool>(s.endian); }},
        {"FileStreamEndian::writeValue(float)", allocatesNothing,
         [](S& s) { writeValue<FileStreamEndian, float>(s.endian); }},
        {"FileStreamEndian::writeValue(int)", allocatesNothing,
         [](S& s) { writeValue<FileStreamEndian, int>(s.endian); }},
        {"FileStreamEndian::writeValue(unsigned int)", allocatesNothing,
         [](S& s) { writeValue<FileStreamEndian, unsigned int>(s.endian); }},
        {"ReadBool(bool*, unsigned long, _IO_FILE*)", allocatesNothing,
         [](S&) { accessValues<bool>(ReadBool); }},
        {"ReadFloat(float*, unsigned long, _IO_FILE*)", allocatesNothing,
         [](S&) { accessValues<float>(ReadFloat); }},
        {"ReadInt(int*, unsigned long, _IO_FILE*)", allocatesNothing, [](S&) { accessValues<int>(ReadInt); }},
        {"ReadUInt(unsigned int*, unsigned long, _IO_FILE*)", allocatesNothing,
         [](S&) { accessValues<unsigned int>(ReadUInt); }},
        {"WriteBool(bool const*, unsigned long, _IO_FILE*)", allocatesNothing,
         [](S&) { accessValues<bool>(WriteBool); }},
        {"WriteFloat(float const*, unsigned long, _IO_FILE*)", allocatesNothing,
         [](S&) { accessValues<float>(WriteFloat); }},
        {"WriteInt(int const*, unsigned long, _IO_FILE*)", allocatesNothing,
         [](S&) { accessValues<int>(WriteInt); }},
        {"WriteUInt(unsigned int const*, unsigned long, _IO_FILE*)", allocatesNothing,
         [](S&) { accessValues<unsigned int>(WriteUInt); }},

        // Messages
        {"Message::Message()", allOrNothing, [](S& s) { s.out.madeMessage = std::make_unique<Message>(); }},
        {"Message::Message(int const&, KS_String const&)", allOrNothing,
         [](S& s) { s.out.madeMessage = std::make_unique<Message>(1, s.text); }},
        {"Message::Message(int const&, KS_String const&, KS_String const&)", allOrNothing,
         [](S& s) { s.out.madeMessage = std::make_unique<Message>(1, s.text, s.other); }},
        {"Message::Message of another", allOrNothing,
         [](S& s) { s.out.madeMessage = std::make_unique<Message>(s.message); }},
        {"Message::setTitle", allOrNothing, [](S& s) { s.message.setTitle(s.other); }},
        {"Message::setContent", allOrNothing, [](S& s) { s.message.setContent(s.other); }},
        {"Message::asString() const", allOrNothing,
         [](S& s)
         {
             s.message.setTime(0);
             s.out.text = s.message.asString();
         }},
        {"Message::getTimeAsString() const", allOrNothing,
         [](S& s)
         {
             s.message.setTime(0);
             s.out.text = s.message.getTimeAsString();
         }},
        {"Message::~Message()", allocatesNothing, [](S& s) { s.spareMessage.reset(); }},
        {"MessageHandler::MessageHandler of another", allOrNothing,
         [](S& s) { s.otherHandler = MessageHandler(s.handler); }},
        {"MessageHandler::operator=", allOrNothing, [](S& s) { s.otherHandler = s.handler; }},
        {"MessageHandler::getActualVerbosityLevel() const", allocatesNothing,
         [](S& s) { s.out.number = s.handler.getActualVerbosityLevel(); }},
        {"MessageHandler::getNumberOfErrorsOrCriticals() const", allocatesNothing,
         [](S& s) { s.out.number = s.handler.getNumberOfErrorsOrCriticals(); }},
        {"MessageHandler::getNumberOfWarnings() const", allocatesNothing,
         [](S& s) { s.out.number = s.handler.getNumberOfWarnings(); }},
        {"MessageHandler::push(Message const&)", allOrNothing, [](S& s) { s.handler.push(s.message); }},
        {"MessageHandler::push(int const&, KS_String const&, KS_String const&)", allOrNothing,
         [](S& s) { s.handler.push(1, s.text, s.other); }},
        {"MessageHandler::pushIgnoringLevel(Message const&)", allOrNothing,
         [](S& s) { s.handler.pushIgnoringLevel(s.message); }},
        {"MessageHandler::pushIgnoringLevel(Message const&)", allOrNothing,
         [](S& s) { s.handler.pushIgnoringLevel(s.handler.getMessages()[0]); }},
        {"MessageHandler::pushCritical", allOrNothing, [](S& s) { s.handler.pushCritical(s.text, s.other); }},
        {"MessageHandler::clear", allocatesNothing, [](S& s) { s.handler.clear(); }},

        // Settings
        {"GraphSettings::GraphSettings()", allOrNothing,
         [](S& s) { s.out.madeSettings = std::make_unique<GraphSettings>(); }},
        {"GraphSettings::GraphSettings of others", allOrNothing,
         [](S& s) { s.out.madeSettings = std::make_unique<GraphSettings>(s.settings); }},
        {"GraphSettings::operator=(GraphSettings const&)", allOrNothing,
         [](S& s) { s.settings = s.defaults; }},
        {"GraphSettings::initialize()", allOrNothing, [](S& s) { s.settings.initialize(); }},
        {"GraphSettings::setMenuStyle", allOrNothing, [](S& s) { s.settings.setMenuStyle(s.other); }},
        {"GraphSettings::toXml() const", allOrNothing, [](S& s) { s.out.text = s.settings.toXml(); }},
        {"GraphSettings::~GraphSettings()", allocatesNothing, [](S& s) { s.spareSettings.reset(); }},
    };
}

} // namespace kestrel::graph::test
