// Binds the words of a command line to value objects that the caller supplies.
//
// A word is the prefix and a short name ("-v"), or the prefix, "-" and a long name
// ("--verbose"), optionally followed by the delimiter and a value ("-v=1"). Each word
// that names an option hands its value text (or "") to the option's value object.
// There are no grouped short options, no values in the following word, no end-of-options
// marker and no positional words: a word that names nothing is skipped.
#ifndef OVO_OPTIONS_OPTIONS_PROCESSOR_H
#define OVO_OPTIONS_OPTIONS_PROCESSOR_H

#include <ovo/export.h>

#include <memory>
#include <string>
#include <vector>

namespace ovo {
namespace ProgramOptions {

// Implemented by callers. The processor calls only setValue, the second slot; the first
// is a virtual destructor, so that an application may own its value objects through
// this interface. The processor never owns or destroys them.
class IOptionValue {
public:
    virtual ~IOptionValue() = default;
    // The text behind the delimiter, or "". True when the option counts as processed.
    virtual bool setValue(const std::string& text) = 0;
};

class OptionsProcessorImpl;

class OVO_API OptionsProcessor {
public:
    explicit OptionsProcessor(char prefix = '-', char delimiter = '=');
    ~OptionsProcessor(); // destroys the entries, not their value objects
    OptionsProcessor(const OptionsProcessor&) = delete;
    OptionsProcessor& operator=(const OptionsProcessor&) = delete;

    // Nothing is checked: null value objects, empty names and repeated names are taken.
    // The first entry whose form equals a word's name wins.
    void add(const std::string& shortName, const std::string& longName, const std::string& description,
             IOptionValue* value);
    void add(const std::string& shortName, const std::string& description, IOptionValue* value);

    // Processes the words from the second on (the first is the program's name) and gives
    // the number of words whose option was found and whose value object returned true.
    // A word counts up to its first zero byte. Exceptions of setValue pass through.
    int process(const std::vector<std::string>& args);
    int process(int argc, char* argv[]);

    // "not implemented"
    std::string toString() const;

private:
    std::unique_ptr<OptionsProcessorImpl> impl_;
};

} // namespace ProgramOptions
} // namespace ovo

#endif
