// Where a command's words go: results to standard output, everything else to standard error. Knows
// colours and whether a person or a program reads.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <nlohmann/json_fwd.hpp>

namespace thermika::cli {

using Json = nlohmann::ordered_json;

enum class Color { kAuto, kAlways, kNever };
enum class Style { kPlain, kHeading, kGood, kDoubtful, kBad };

class Output {
public:
    bool isJson = false;     ///< one JSON document in place of texts
    bool isQuiet = false;    ///< no notes
    bool isVerbose = false;  ///< the library's log on standard error
    Color color = Color::kAuto;

    /// Appends to the results. Outside bytes are escaped already, unless a program is to read them.
    void add(std::string_view text) { m_results += text; }
    /// Appends the document and a line feed, in ASCII.
    void addDocument(const Json& document);

    /// Forgets the results so far.
    void discard() { m_results.clear(); }

    /// Writes the results to standard output. What keeps it from that ends the run: see Problem.
    void deliver();

    /// A line on standard error, unless the user wants quiet. Takes outside bytes as they are, and
    /// escapes them: see shown().
    void note(std::string_view line) const;
    /// A line on standard error: "thermika: " and the message, escaped in the same way.
    static void complain(std::string_view message);
    /// "thermika: out of memory", without needing any.
    static void complainOfMemory();

    /// Whether the descriptor is a terminal that takes control codes.
    static bool isCapableTerminal(int descriptor);

    /// `text` in the style's colour, where standard output takes colours.
    std::string styled(Style style, std::string_view text) const;

private:
    std::string m_results;
};

/// The columns of the terminal at standard output; 0 when it is none.
std::size_t terminalColumns();

/// `bytes` as a JSON string: see losslessUtf8().
Json jsonText(std::string_view bytes);

/// The shortest decimal number that is `value`, whatever the locale.
std::string numberText(float value);
/// The same as a JSON number; null when `value` is no finite number.
Json jsonNumber(float value);

}  // namespace thermika::cli
