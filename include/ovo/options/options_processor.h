/// @file
/// Binds the words of a command line to value objects that the caller supplies.
#ifndef OVO_OPTIONS_OPTIONS_PROCESSOR_H
#define OVO_OPTIONS_OPTIONS_PROCESSOR_H

#include <ovo/export.h>

#include <memory>
#include <string>
#include <vector>

namespace ovo {
/// Command-line options bound to value objects of the caller.
namespace ProgramOptions {

/// The value of one option: implemented by callers.
///
/// The processor calls only setValue, the second slot; the first is a virtual destructor,
/// so that an application may own its value objects through this interface. The processor
/// never owns or destroys them. It calls them on the thread that calls process.
///
/// Value objects for a text, a number and a flag (from options.cpp):
/// @snippet options.cpp values
class IOptionValue {
public:
    /// Lets an application own its value objects through this interface.
    virtual ~IOptionValue() = default;
    /// Takes the text behind the delimiter, or "". True when the option counts as processed.
    virtual bool setValue(const std::string& text) = 0;
};

class OptionsProcessorImpl;

/// Binds the words of a command line to value objects that the caller supplies.
///
/// A word is the prefix and a short name ("-v"), or the prefix, "-" and a long name
/// ("--verbose"), optionally followed by the delimiter and a value ("-v=1"). Each word
/// that names an option hands its value text (or "") to the option's value object.
/// There are no grouped short options, no values in the following word, no end-of-options
/// marker and no positional words: a word that names nothing is skipped.
///
/// Nothing is reported: an unknown word is no error. One object is used by one thread at
/// a time (add and process need the caller's exclusion).
///
/// Options bound to their value objects (from options.cpp; process(argc, argv) follows):
/// @snippet options.cpp bind
class OVO_API OptionsProcessor {
public:
    /// A processor without options, for words like "-v=1" by default.
    explicit OptionsProcessor(char prefix = '-', char delimiter = '=');
    /// Destroys the entries, not their value objects.
    ~OptionsProcessor();
    /// Not copyable: the entries belong to one processor.
    ///@{
    OptionsProcessor(const OptionsProcessor&) = delete;
    OptionsProcessor& operator=(const OptionsProcessor&) = delete;
    ///@}

    /// Adds an option with a short and a long name; value is not owned and must outlive
    /// the processor's use of it.
    ///
    /// Nothing is checked: null value objects (which count no word), empty names and
    /// repeated names are taken.
    /// The first entry whose form equals a word's name wins.
    void add(const std::string& shortName, const std::string& longName, const std::string& description,
             IOptionValue* value);
    /// Adds an option with a short name only, as the four-argument add does.
    void add(const std::string& shortName, const std::string& description, IOptionValue* value);

    /// Processes the words from the second on (the first is the program's name).
    ///
    /// A word counts up to its first zero byte.
    /// @return the number of words whose option was found and whose value object returned true.
    /// @throws whatever setValue throws: it passes through.
    int process(const std::vector<std::string>& args);
    /// Processes argv[1] to argv[argc - 1], as the other process does.
    int process(int argc, char* argv[]);

    /// "not implemented"
    std::string toString() const;

private:
    std::unique_ptr<OptionsProcessorImpl> impl_;
};

} // namespace ProgramOptions
} // namespace ovo

#endif
