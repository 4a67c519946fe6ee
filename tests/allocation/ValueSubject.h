/// @file
#pragma once

#include "Operation.h"

#include <foundation/Array.h>
#include <foundation/ArrayOfPtr.h>
#include <foundation/FileStream.h>
#include <foundation/KS_Class.h>
#include <foundation/KS_String.h>
#include <ks_graph/GraphSettings.h>
#include <ks_graph/Message.h>

#include <memory>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

/// One of each of the foundation types, of the diagnostics and of the settings.
class ValueSubject
{
public:
    ValueSubject();
    ValueSubject(ValueSubject const&) = delete;
    ValueSubject& operator=(ValueSubject const&) = delete;

    std::string state() const;
    std::string results() const;
    void prepareRepeat() { out = Results(); }
    void expectWhole() const;

    struct Results
    {
        long number = -1;
        KS_String text;
        Array<KS_String, _Wa> texts;
        ArrayOfPtr<int, KS_NO> pointers;
        std::unique_ptr<KS_String> madeText;
        std::unique_ptr<KS_Class> madeObject;
        std::unique_ptr<KS_MetaClassBase> madeMetaClass;
        std::unique_ptr<Message> madeMessage;
        std::unique_ptr<GraphSettings> madeSettings;
    };

    Results out;

    KS_String text{"A text that is long enough, and ends with a number: 1"};
    KS_String const other{"another text, and a longer one: it has more letters than the first, by far"};
    KS_String const prefix{"A text"};
    Array<KS_String, _Wa> list; // without room for more
    Array<KS_String, _Wa> const otherList;
    Array<KS_String, _Wa> const fourTexts;
    ArrayOfPtr<int, KS_NO> pointers; // without room for more
    MessageHandler handler;
    MessageHandler otherHandler;
    Message message{2, "a title", "a content"};
    std::unique_ptr<Message> spareMessage = std::make_unique<Message>(1, "a title");
    std::unique_ptr<KS_Class> object = std::make_unique<KS_Class>();
    std::unique_ptr<KS_MetaClassBase> metaClass;
    GraphSettings settings;
    GraphSettings const defaults;
    std::unique_ptr<GraphSettings> spareSettings = std::make_unique<GraphSettings>();
    int numbers[5] = {1, 2, 3, 4, 5};
    std::unique_ptr<FileStream> stream;
    FileStreamRaw raw;
    FileStreamEndian endian;
    std::unique_ptr<FileStreamRaw> spareRaw;
    std::unique_ptr<FileStreamEndian> spareEndian;
};

std::vector<Operation<ValueSubject>> valueOperations();

} // namespace kestrel::graph::test
