#include "platform/Cld2Recognizer.h"

#include "platform/Text.h"

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace ombrel {
namespace {

std::string languageOf(std::string_view text) {
    return Cld2Recognizer().dominantLanguage(text).value_or("none");
}

struct Sample {
    std::string_view language;
    std::string_view text;
};

constexpr std::array samples{
    Sample{"en", "How do I install the package?"},
    Sample{"de", "Wie installiere ich das Paket?"},
    Sample{"fr", "Comment puis-je installer ce paquet sur mon ordinateur ?"},
    Sample{"es", "¿Cómo instalo el paquete?"},
    Sample{"pt", "Como instalo o pacote?"},
    Sample{"it", "Come installo il pacchetto?"},
    Sample{"nl", "Hoe installeer ik het pakket?"},
    Sample{"sv", "Hur installerar jag paketet?"},
    Sample{"nb", "Jeg har en hund som liker å løpe i skogen hver morgen før frokost."},
    Sample{"pl", "Jak zainstalować pakiet?"},
    Sample{"ru", "Как установить пакет?"},
    Sample{"uk", "Як встановити пакунок?"},
    Sample{"bg", "Как да инсталирам пакета?"},
    Sample{"zh-Hans", "如何安装这个软件包？请告诉我怎么做。"},
    Sample{"zh-Hant", "如何安裝這個軟體套件？請告訴我該怎麼做。"},
    Sample{"ja", "パッケージをインストールするにはどうすればよいですか。"},
    Sample{"ko", "패키지를 어떻게 설치합니까?"},
    Sample{"ar", "كيف يمكنني تثبيت هذه الحزمة على جهاز الكمبيوتر الخاص بي؟"},
    Sample{"he", "איך להתקין את החבילה?"},
    Sample{"el", "Πώς εγκαθιστώ το πακέτο;"},
    Sample{"id", "Bagaimana cara memasang paket ini di komputer saya?"},
    Sample{"tr", "Paketi nasıl kurarım?"},
    Sample{"th", "วิธีการติดตั้งแพคเกจ"},
    Sample{"vi", "Làm thế nào để cài đặt gói?"},
};

TEST(Cld2Recognizer, RecognisesLanguages) {
    for (const Sample& sample : samples) {
        EXPECT_EQ(languageOf(sample.text), sample.language) << sample.text;
    }
}

TEST(Cld2Recognizer, GivesTheDominantOfTwoLanguages) {
    EXPECT_EQ(languageOf("Der Hund läuft. The dog runs fast over the hill and far away."), "en");
}

TEST(Cld2Recognizer, WeighsTheWholeOfALongText) {
    std::string text;
    for (int i = 0; i < 100; ++i) {
        text += "This licence says in English what one may do with the text that follows it. ";
    }
    for (int i = 0; i < 200; ++i) {
        text += "Die Station liegt auf einer Insel und misst jeden Tag den Wind und den Regen. ";
    }
    EXPECT_EQ(languageOf(text), "de");
}

TEST(Cld2Recognizer, GivesNothingWithoutARecognisableLanguage) {
    for (const std::string_view text :
         {"", "   \n", "1234567890 42 17", "!!! ... ??? ---", "xq zvk wpl qqx jfd", "x",
          "asdf qwer zxcv uiop hjkl", "\xff\xfe\xfd", "😀 😀 😀"}) {
        EXPECT_EQ(languageOf(text), "none") << text;
    }
}

TEST(Cld2Recognizer, ReadsAroundInvalidBytes) {
    EXPECT_EQ(languageOf("How do I install the \xff\xc3 package on this computer?"), "en");
    EXPECT_EQ(languageOf(std::string("\0How do I install the package?\0", 31)), "en");
}

TEST(Cld2Recognizer, ReadsAroundControlsAndNoncharacters) {
    std::vector<char32_t> scalars{0x7f,    0x85,     0xfdd0, 0xfdef, 0xfffe, 0xffff,
                                  0x1fffe, 0x10ffff, 0xfeff, 0xfffd, 0xe000, 0x378};
    for (char32_t control = 0; control < 0x20; ++control) {
        scalars.push_back(control);
    }
    for (const char32_t scalar : scalars) {
        std::string text = "Where can I read about ";
        appendScalar(text, scalar);
        text += " the configuration of the server and its clients?";
        EXPECT_EQ(languageOf(text), "en") << static_cast<unsigned>(scalar);
    }
}

TEST(Cld2Recognizer, ReadsLongTextsThatRepeatThemselves) {
    for (const Sample& sample : samples) {
        std::string text;
        while (text.size() < 1'000'000) {
            text += sample.text;
            text += ' ';
        }
        EXPECT_EQ(languageOf(text), sample.language);
    }
}

TEST(Cld2Recognizer, MayBeAskedOnManyThreads) {
    const Cld2Recognizer recognizer;
    std::array<int, 4> right{};
    std::vector<std::thread> threads;
    for (int& count : right) {
        threads.emplace_back([&recognizer, &count] {
            for (int round = 0; round < 20; ++round) {
                for (const Sample& sample : samples) {
                    count += recognizer.dominantLanguage(sample.text) == sample.language ? 1 : 0;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const int count : right) {
        EXPECT_EQ(count, 20 * static_cast<int>(samples.size()));
    }
}

} // namespace
} // namespace ombrel
