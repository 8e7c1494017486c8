#pragma once

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/SectionKeys.h"
#include "files/TextFile.h"

class Fg_Log;

/// Reads and writes the applet's configuration file (".mcf"), a text file of sections and keys:
///
///     [Kamerasektion]
///
///     ConfigFileVersion=2.0;
///     Typ='Marovine';
///
///     [Port A]
///     FG_WIDTH=1024;
///     FG_DEBUGFILE='';
///
/// A parser serves one save or one load and is used by one thread. Texts go into buffers of 256 bytes. A
/// number has a decimal point in the file whatever locale the process has set.
class Fg_ConfigFileParser {
 public:
    static constexpr char CameraSectionText[] = "[Kamerasektion]\n";
    static constexpr char ConfigFileVersionText[] = "\nConfigFileVersion=2.0;\n";

    /// Opens the file for reading, or for reading and writing, if its name is that of a configuration file
    /// and it exists; otherwise no file is open, lookups find nothing and writers fail. Both pointers may be
    /// null.
    Fg_ConfigFileParser(Fg_Log* log, const char* fileName, bool readOnly);

    /// Creates or empties the file and directs the writers to it, in place of the file open before.
    bool setSaveFile(const char* path);

    /// Whether ".mcf" occurs anywhere in the path; false for a null path.
    bool checkFileType(const char* path) const;

    /// Whether the file can be opened for reading.
    bool checkFileExist(const char* path) const;

    /// From now on writers leave it to the end of the parser to flush: for a file that is written as a whole
    /// before anybody may read it.
    void flushAtEnd();

    // ---- Writers. Each flushes, and returns 0, or -1 when its text could not be written. ----

    int writeConfigFileHeader();
    int writeConfigFilePortA();
    int writeConfigFilePortB();
    /// The section of a port: 0 is [Port A].
    int writeConfigFileByPort(int port);
    /// A text between apostrophes. The format has no escapes: a text with an apostrophe, '=', ';' or a line
    /// feed does not come back whole.
    int writeConfigFile(const char* key, const char* value);
    /// A value as it stands.
    int writeConfigFileValue(const char* key, const char* value);
    int writeConfigFileIntKey(const char* key, int value);
    int writeConfigFileUInt64Key(const char* key, unsigned long value);
    int writeConfigFileInt64Key(const char* key, long value);
    /// 12 significant digits.
    int writeConfigFileDoubleKey(const char* key, double value);

    static std::string getPortString(int port);

    // ---- Readers ----

    /// Says which keys of a section will be asked for: one pass over the file then answers for all of them,
    /// where each other lookup reads it anew. No answer changes. The keys' texts must outlive the parser.
    void expectKeys(const char* section, const std::vector<std::string_view>& keys);
    /// Copies the value of a key: the first line "key=value" after the first line that contains the section
    /// text; later sections are no barrier. Returns 0, or -8000 with "Error" in the buffer.
    int parseKey(const char* section, const char* key, char* destination);
    /// Copies the value of the first line of the file that contains the text anywhere. Returns as `parseKey`.
    int parseKeyFromLine(const char* needle, char* destination);

    /// The typed readers return 0, or -1 when the value's text contains "Error", which is how a missing key
    /// shows; the number then stays as it was. A text that is no number is no error, see the conversions.
    int parseIntKey(const char* section, const char* key, int* value);
    int parseUInt64Key(const char* section, const char* key, unsigned long* value);
    int parseInt64Key(const char* section, const char* key, long* value);
    int parseDoubleKey(const char* section, const char* key, double* value);

    /// The same in the section of a port; -1 also for a null key.
    int parseKeySection(int port, const char* key, char* destination);
    int parseIntKeySection(int port, const char* key, int* value);
    int parseUInt64KeySection(int port, const char* key, unsigned long* value);
    int parseInt64KeySection(int port, const char* key, long* value);
    int parseDoubleKeySection(int port, const char* key, double* value);

    /// The same in the file's header.
    int parseIntKeyFromHeader(const char* key, int* value);

    // ---- Conversions of the number at the start of a text; always 0 ----

    /// Decimal. The lower 32 bits count, so an unsigned number saved as a negative one or not reads the same.
    static int getIntValue(const char* text, int* value);
    /// Decimal. A text without a number leaves the value as it was.
    static int getUInt64Value(const char* text, unsigned long* value);
    /// Decimal, "0x" hexadecimal or "0" octal. A text without a number leaves the value as it was.
    static int getInt64Value(const char* text, long* value);
    static int getDoubleValue(const char* text, double* value);

 private:
    /// The value of a key, valid until the next lookup.
    std::optional<std::string_view> find(const char* section, const char* key);
    /// The text of a number, none when it contains "Error", which is how a missing key shows.
    std::optional<std::string_view> numberText(const char* section, const char* key);

    int write(std::initializer_list<const char*> texts);

    void logError(const char* message) const;
    void logInfo(const char* message) const;
    void logEntry(const char* member) const;

    bool flushesEachLine_ = true;
    std::unique_ptr<char[]> room_;  ///< of `file_`, which is closed before it goes
    marovine::File file_;
    marovine::LineReader reader_;  ///< of that file
    Fg_Log* log_;
    std::optional<marovine::SectionKeys> expected_;
};
