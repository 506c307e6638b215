#include <gtest/gtest.h>

#include "LumoKit/base/Messages.h"

using namespace lumo;

TEST(Messages, EveryKindHasBothTexts) {
    for (int i = 1; i <= static_cast<int>(MessageKind::anArray); ++i) {
        const Message message(static_cast<MessageKind>(i));
        EXPECT_FALSE(message.text(Language::japanese).empty()) << i;
        EXPECT_FALSE(message.text(Language::english).empty()) << i;
    }
}

TEST(Messages, InsertedPartsFollowTheLanguage) {
    struct Case {
        Message message;
        const char* japanese;
        const char* english;
    };
    const Case cases[] = {
        // Names are quoted the way each language quotes them, and may move within the sentence.
        {{MessageKind::misplacedOperator, {"*"}},
         "「*」の使い方が正しくありません",
         "“*” isn’t used correctly here"},
        {{MessageKind::unitOnUnit, {"m", "kg"}},
         "m にさらに kg は付けられません",
         "Can’t add kg on top of m"},
        // Fragments are put into the message's language.
        {{MessageKind::kindsNotOrdered, {MessageKind::aList, MessageKind::aNumber}},
         "表と数は大小を比べられません",
         "a list and a number can’t be ordered"},
        {{MessageKind::argumentCount, {"f", "1", MessageKind::argumentWord}},
         "f は引数が 1 個必要です",
         "f needs 1 argument"},
        // A whole message inside another, as a failure from another sheet is shown.
        {{MessageKind::fromSheet, {{MessageKind::needsValues, {"sum"}}, "Lib"}},
         "sum には値が必要です（Lib シートの）",
         "sum needs values (from sheet “Lib”)"},
        // Inserted text is never read as a pattern, and a missing part leaves nothing.
        {{MessageKind::undefinedName, {"{0}"}}, "{0} が定義されていません", "{0} is not defined"},
        {Message(MessageKind::undefinedName), " が定義されていません", " is not defined"},
        {Message("as written"), "as written", "as written"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.message.text(Language::japanese), c.japanese);
        EXPECT_EQ(c.message.text(Language::english), c.english);
    }
}
