#pragma once

#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <utility>

#include "files/TextFile.h"

/// One channel of a full lookup table.
struct LookupTable_s {
    std::int32_t* values = nullptr;  ///< when read from a file: made with new[], the receiver's to delete[]
    std::int32_t id = 0;             ///< channel: 0 red, 1 green, 2 blue
    std::uint32_t nrOfElements = 0;
    std::int32_t format = 0;
    bool number = false;
};

/// One channel of a knee table. The parser uses the values and their number only.
struct KneeLookupTable_s {
    double* values = nullptr;  ///< when read from a file: made with new[], the receiver's to delete[]
    std::int32_t id = 0;
    std::uint32_t nrOfElements = 0;
    std::int32_t format = 0;
    bool number = false;
};

namespace marovine {

/// A table record that releases the values a read put into it.
template <typename Table>
struct OwnedTable : Table {
    OwnedTable() = default;
    /// The fields of a record; values, if any, become this record's own.
    explicit OwnedTable(const Table& fields) : Table(fields) {}
    ~OwnedTable() { delete[] this->values; }
    OwnedTable(const OwnedTable&) = delete;
    OwnedTable& operator=(const OwnedTable&) = delete;
};

}  // namespace marovine

/// Reads and writes lookup-table files (".lut"): lines "key=value;" and "index,value;" in sections such as
/// "[red]", with texts of up to 255 characters. A number has a decimal point whatever locale the process has
/// set. One caller at a time. Functions return 0, or -1 when they fail, unless they say otherwise; a null
/// name is a file that cannot be opened.
class Fg_LutFileParser {
 public:
    /// Bound on the entries of a table: what a 16-bit input can address. A file that names more is refused
    /// rather than given the memory.
    static constexpr std::uint32_t MaxElements = 65536;

    // ---- Files. The parser holds one at a time; opening another closes it, and so does its end. ----

    /// Always true: the name of a lookup-table file is free.
    bool checkFileType(const char* name) const;
    /// Whether the file can be opened for reading.
    bool checkFileExist(const char* name) const;
    /// Opens an existing file for reading, or for reading and writing; true when it is open.
    bool setOpenFile(const char* name, bool readOnly);
    /// Creates or empties the file; true when it is open.
    bool setSaveFile(const char* name);

    // ---- Writing line by line; each line is flushed. A line of over 255 characters is refused whole. ----

    int writeLutFileHeader(const char* text);
    /// key + delimiter + value + ";".
    int writeLutFileValue(const char* key, const char* value, const char* delimiter);
    int writeIntKey(const char* key, int value, const char* delimiter);
    /// 12 significant digits.
    int writeDoubleKey(const char* key, double value, const char* delimiter);
    int writeIntInt(int index, int value, const char* delimiter);
    /// 12 decimals.
    int writeIntDouble(int index, double value, const char* delimiter);

    // ---- Reading ----

    /// The decimal number at the start of a text, 0 when there is none; a number that does not fit becomes
    /// the nearest one that does, so that an absurd count is not taken for a small one.
    static int getIntValue(const char* text, int* value);
    static int getDoubleValue(const char* text, double* value);

    /// Copies, into a buffer of 256 bytes, the second of the pieces that the delimiter characters make of the
    /// first line that contains the key anywhere and has a second piece; "Error" and -1 without such a line.
    int parseKeyFromLine(const char* key, char* text, const char* delimiters);
    /// -1 and the value 0 when there is no such line.
    int parseIntKey(const char* key, int* value, const char* delimiters);
    int parseDoubleKey(const char* key, double* value, const char* delimiters);

    /// Reads the entries 0 to count - 1 from the lines "index,value" that follow the first line with the
    /// section text; the next section is no barrier. Entries that are not found keep their value. Always 0.
    int parseIntInt(std::int32_t* values, std::uint32_t count, const char* delimiter, const char* section);
    int parseIntDouble(double* values, std::uint32_t count, const char* delimiter, const char* section);

    // ---- Whole files ----

    /// -1 when the file cannot be created or not all of it could be written, or a table has no values.
    int saveLutToFile(const char* name, const LookupTable_s& red, const LookupTable_s& green,
                      const LookupTable_s& blue);
    int saveLutToFile(const char* name, const LookupTable_s& table);
    int saveLutToFile(const char* name, const KneeLookupTable_s& red, const KneeLookupTable_s& green,
                      const KneeLookupTable_s& blue);
    /// The text stands in place of the section.
    int saveLutToFile(const char* name, const KneeLookupTable_s& knee, const char* text);

    /// Reads the table of a section. The record's values are released first: null, or from an earlier read.
    /// -1 when the file cannot be opened, or names a negative number of elements or more than `MaxElements`;
    /// the record then has no values. Missing keys and entries are 0. Every section takes the keys of the
    /// first one.
    int getLutFromFile(const char* name, LookupTable_s& table, const char* section);
    /// The sections "[red]", "[green]" and "[blue]"; stops at the first that fails.
    int getLutFromFile(const char* name, LookupTable_s& red, LookupTable_s& green, LookupTable_s& blue);
    /// Reads as many values as the record's `nrOfElements` says; at most `MaxElements`.
    int getLutFromFile(const char* name, KneeLookupTable_s& knee, const char* section);
    int getLutFromFile(const char* name, KneeLookupTable_s& red, KneeLookupTable_s& green,
                       KneeLookupTable_s& blue);

    int saveMatrixToFile(const char* name, const char* header, const std::int32_t* values,
                         std::uint32_t count);
    /// Not supported: always -1.
    int getMatrixFromFile(const char* name, std::int32_t* values, std::uint32_t count);

 private:
    // Writing without a flush; false when something could not be written.
    bool putText(const char* text);
    bool putLine(const char* key, const char* value, const char* delimiter);
    bool putKey(const char* key, std::int32_t value);
    template <typename Value>
    bool putEntries(const Value* values, std::uint32_t count);
    bool putTable(const LookupTable_s& table);
    bool putTable(const KneeLookupTable_s& table);
    int flushed(bool written);

    template <typename Table>
    int saveSections(const char* name, const char* title,
                     std::initializer_list<std::pair<const char*, const Table*>> sections);
    template <typename Value>
    void readEntries(Value* values, std::uint32_t count, const char* delimiter, const char* section);
    /// The result of a read, or -1 when the file could not be read as far as it was needed.
    int readToTheEnd(int result) const;
    /// What the keys of the open file say, which is the same for every section; without values.
    LookupTable_s readKeys();
    int readTable(const LookupTable_s& keys, LookupTable_s& table, const char* section);

    marovine::File file_;
    marovine::LineReader reader_;  ///< of that file
};
