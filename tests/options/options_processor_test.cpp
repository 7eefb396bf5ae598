#include <ovo/options/options_processor.h>

#include <gtest/gtest.h>

#include <stdexcept>

using ovo::ProgramOptions::IOptionValue;
using ovo::ProgramOptions::OptionsProcessor;
using Words = std::vector<std::string>;

namespace {

// Records every value it receives and answers with `accept`; throws on "throw".
struct Recorder : IOptionValue {
    explicit Recorder(bool accept = true) : accept(accept) {}
    bool setValue(const std::string& text) override
    {
        if (text == "throw")
            throw std::invalid_argument("bad value");
        received.push_back(text);
        return accept;
    }
    bool accept;
    Words received;
};

} // namespace

TEST(OptionsProcessor, WordsMatchWholeFormsOnlyOfTheirPrefixAndDelimiter)
{
    OptionsProcessor options;
    Recorder verbose;
    options.add("v", "verbose", "talk more", &verbose);
    const struct {
        std::string word;
        bool reaches;
        std::string value;
    } cases[] = {{"-v", true, ""},       {"--verbose", true, ""}, {"-v=1", true, "1"},    {"--verbose=1", true, "1"},
                 {"-v=", true, ""},      {"-v=a=b", true, "a=b"}, {"verbose", false, ""}, {"-verbose", false, ""},
                 {"--v", false, ""},     {"-V", false, ""},       {"--verb", false, ""},  {"-v 1", false, ""},
                 {"-", false, ""},       {"=1", false, ""}};
    for (const auto& c : cases) {
        verbose.received.clear();
        EXPECT_EQ(options.process(Words{"program", c.word}), c.reaches ? 1 : 0) << c.word;
        EXPECT_EQ(verbose.received, c.reaches ? Words{c.value} : Words{}) << c.word;
    }

    // Another prefix and delimiter.
    OptionsProcessor slashed('/', ':');
    Recorder x, help;
    slashed.add("x", "yy", "", &x);
    slashed.add("h", "help", "", &help);
    EXPECT_EQ(slashed.process(Words{"program", "/x:5", "/-yy", "//help", "/-help:a:b", "-x", "/x=1"}), 3);
    EXPECT_EQ(x.received, (Words{"5", ""}));
    EXPECT_EQ(help.received, Words{"a:b"});
}

TEST(OptionsProcessor, CountsWordsThatTheirValueObjectAccepted)
{
    OptionsProcessor options;
    Recorder accepting, refusing(false);
    options.add("a", "", &accepting);
    options.add("r", "", &refusing);
    EXPECT_EQ(options.process(Words{"program", "-a=1", "stray", "-r", "-a=2", "--", "-a"}), 3);
    EXPECT_EQ(accepting.received, (Words{"1", "2", ""}));
    EXPECT_EQ(refusing.received, Words{""});
    EXPECT_EQ(options.process(Words{}), 0);
    EXPECT_EQ(options.process(Words{"-a"}), 0) << "the first word is the program's name";
    EXPECT_EQ(accepting.received.size(), 3u);

    // A throwing value object stops processing; earlier effects stay.
    EXPECT_THROW(options.process(Words{"program", "-a=before", "-r=throw", "-a=after"}), std::invalid_argument);
    EXPECT_EQ(accepting.received.back(), "before");
}

TEST(OptionsProcessor, FirstEntryWithAnEqualFormWinsEvenWithoutValueObject)
{
    OptionsProcessor options;
    Recorder first, shadowed, afterNull, longOnly, shortOnly;
    options.add("d", "dup", "", &first);
    options.add("d", "dup", "", &shadowed);
    options.add("n", "null", "", nullptr);
    options.add("n", "nn", "", &afterNull);
    options.add("", "long", "", &longOnly); // its short form is empty: it takes the empty names
    options.add("s", "no long name", &shortOnly);
    EXPECT_EQ(options.process(Words{"program", "-d", "--dup=x", "-n", "--null", "=5", "", "=x=y", "-"}), 5);
    EXPECT_EQ(first.received, (Words{"", "x"}));
    EXPECT_EQ(longOnly.received, (Words{"5", "", "x=y"}));
    for (const Recorder* unreached : {&shadowed, &afterNull, &shortOnly})
        EXPECT_TRUE(unreached->received.empty());
}

TEST(OptionsProcessor, WordsAreCStrings)
{
    OptionsProcessor options;
    Recorder value;
    options.add("k", "key", "", &value);
    EXPECT_EQ(options.process(Words{"program", std::string("-k=ab\0cd", 8), std::string("--key\0=zz", 9)}), 2);
    EXPECT_EQ(value.received, (Words{"ab", ""}));

    char program[] = "-k=program", word[] = "--key=argv";
    char* argv[] = {program, word, nullptr};
    EXPECT_EQ(options.process(2, argv), 1);
    EXPECT_EQ(value.received.back(), "argv");
    EXPECT_EQ(options.process(1, argv), 0) << "argv[0] is the program's name";
}
