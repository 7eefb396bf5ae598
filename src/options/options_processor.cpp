#include <ovo/options/options_processor.h>

#include <string>
#include <vector>

namespace ovo {
namespace ProgramOptions {

// One registered option; the forms are complete, prefix included, so that a word's name
// compares with them directly.
struct OptionEntry {
    std::string shortForm; // prefix + short name, or empty
    std::string longForm;  // prefix + "-" + long name, or empty
    std::string description;
    IOptionValue* value;   // not owned; may be null
};

class OptionsProcessorImpl {
public:
    OptionsProcessorImpl(char prefix, char delimiter) : prefix(1, prefix), delimiter(1, delimiter) {}

    void add(const std::string& shortName, const std::string& longName, const std::string& description,
             IOptionValue* value)
    {
        entries.push_back({shortName.empty() ? std::string() : prefix + shortName,
                           longName.empty() ? std::string() : prefix + "-" + longName, description, value});
    }

    // One word, treated as a C string: the name up to the first delimiter, the value behind it.
    bool processWord(const char* word) const
    {
        const std::string text(word);
        const std::size_t cut = text.find(delimiter);
        const std::string name = text.substr(0, cut);
        const std::string value = cut == std::string::npos ? std::string() : text.substr(cut + 1);
        IOptionValue* const target = find(name);
        return target != nullptr && target->setValue(value);
    }

    std::string prefix;
    std::string delimiter;
    std::vector<OptionEntry> entries;

private:
    // The value object of the first entry with an equal form (an empty form too); null
    // when none matches, or when the matching entry has none.
    IOptionValue* find(const std::string& name) const
    {
        for (const OptionEntry& entry : entries)
            if (name == entry.shortForm || name == entry.longForm)
                return entry.value;
        return nullptr;
    }
};

OptionsProcessor::OptionsProcessor(char prefix, char delimiter)
    : impl_(new OptionsProcessorImpl(prefix, delimiter))
{
}

OptionsProcessor::~OptionsProcessor() = default;

void OptionsProcessor::add(const std::string& shortName, const std::string& longName,
                           const std::string& description, IOptionValue* value)
{
    impl_->add(shortName, longName, description, value);
}

void OptionsProcessor::add(const std::string& shortName, const std::string& description, IOptionValue* value)
{
    impl_->add(shortName, std::string(), description, value);
}

int OptionsProcessor::process(const std::vector<std::string>& args)
{
    int count = 0;
    for (std::size_t i = 1; i < args.size(); ++i)
        count += impl_->processWord(args[i].c_str()) ? 1 : 0;
    return count;
}

int OptionsProcessor::process(int argc, char* argv[])
{
    int count = 0;
    for (int i = 1; i < argc; ++i)
        count += impl_->processWord(argv[i]) ? 1 : 0;
    return count;
}

std::string OptionsProcessor::toString() const { return "not implemented"; }

} // namespace ProgramOptions
} // namespace ovo
