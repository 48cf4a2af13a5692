#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "../base/array.hpp"
#include "../base/text.hpp"

// The module `file`: unit numbers, text file access, path names, shell-backed operations, queries.
//
// Names of files and directories are texts whose trailing blanks are not part of them. A text file is a sequence of
// records; a record ends at LF or at CR LF, and the last one needs no end. "Stops the run" means that base::run_error
// is thrown; where nothing else is said its message belongs on standard error and its exit status is 2. However a
// routine ends, a unit that it took is given back.
//
// The module keeps one table of units for the whole process, without a lock: it is for one thread at a time. So is what
// stands on it, the readers of Gaussian inputs.

namespace displacement_generator::file {

// ---- Unit numbers. One table for the whole process says which open stream belongs to a unit number. Units 5 and 6 are
// standard input and standard output.

enum class action { read, write };

/// The first unit from 100 upward that is not connected.
///   fid  out  the unit
void get_free_fid(int& fid);

/// Whether a unit is connected to a stream.
[[nodiscard]] bool is_connected(int fid);

/// Connects a unit to a file. To read, the file must exist and be a regular file: text files are read more than once,
/// so a pipe or a device does not do. To write, the file is made if it is missing and emptied if it is not.
///   fid    in  a unit from 1 upward that is not connected; another one stops the run
///   fname  in  the file
/// Result: blank when the unit is connected now, otherwise why it is not.
[[nodiscard]] std::string open_unit(int fid, std::string_view fname, action what);

/// What becomes of the file when its unit is closed.
enum class disposition { keep, remove };

/// Disconnects a unit; one that is not connected is left alone. Where the file cannot be closed or removed, the run
/// stops, with the unit disconnected.
void close_unit(int fid, disposition what = disposition::keep);

/// Reads the next record of a unit.
///   line  out  the record, cut or padded; unchanged when the result is false
/// Result: false at the end of the file, on a read error, or when the unit is not connected for reading.
[[nodiscard]] bool read_record(int fid, base::text_ref line);

/// Writes `record` and a line feed to a unit; what cannot be written stops the run.
void write_record(int fid, std::string_view record);

/// The longest record that a unit's stream accepts: 2147483647 characters when it is connected, -1 when it is not.
[[nodiscard]] std::int64_t record_length(int fid);

// ---- Text file access

/// The number of records of a text file. A file that cannot be opened stops the run with exit status 1 and a message on
/// standard output: " Error in opening file 'FNAME' in function num_file_lines, stop!"; the error's detail is the
/// system's reason. A file that cannot be read, or
/// that has more records than an integer counts, stops it too.
[[nodiscard]] int num_file_lines(std::string_view fname);

/// The longest record that a connection to the file accepts: 2147483647. A file that cannot be opened has none: two
/// lines on standard output say so, and the result is 132.
[[nodiscard]] int num_file_recl(std::string_view fname);

/// Reads the first records of a text file. A file that cannot be opened or read, or that has fewer records, stops the
/// run.
///   fname  in   the file
///   nline  in   how many records to read
///   lines  out  elements 1..nline: the records, each cut or padded
void read_lines(std::string_view fname, int nline, base::text_view lines);

/// Reads a square matrix that is printed in blocks of columns: each block one line that is passed over, then for every
/// row one line with the row's number and the row's values in the columns of the block, in free format.
///   fid  in   a unit positioned at the first block; it stays open, after the last row of the last block
///   n    in   order of the matrix
///   a    out  elements (1..n, 1..n); whatever was read stays when the run stops
///   nb   in   columns of a block; at least 1
/// A missing line or value, or a field that is no number, stops the run.
void read_block_data(int fid, int n, base::view2<double> a, int nb);

/// Finds the next record that contains a word.
///   fid   in   a unit connected for reading; it is left after the record found, or at the end
///   word  in   what to look for, with all its characters, trailing blanks included
///   line  out  the record last read, cut or padded; the word is looked for in this text
/// Result: 1 when `line` contains the word, 0 when a read failed first. A first read that fails leaves `line` as it
/// was, and the word is looked for in it all the same.
[[nodiscard]] int search_word_free(int fid, std::string_view word, base::text_ref line);

// ---- Path names. The name is taken without its leading and trailing blanks. The result is a part of it, empty where
// the name has no such part: it lives as long as the name does, and a name that ends with the statement does not
// compile. The forms for fixed-length texts give a text of the same length.

/// The characters before the last "/"; nothing when that is the first character.
[[nodiscard]] std::string_view name_dir(std::string_view name);
/// The characters after the last "/", or all of them without one.
[[nodiscard]] std::string_view name_base(std::string_view name);
/// The characters after the last "." of the whole name, even if a "/" comes after that.
[[nodiscard]] std::string_view name_ext(std::string_view name);
/// name_base up to its last ".", or all of it without one.
[[nodiscard]] std::string_view name_main(std::string_view name);

template <base::ending_string type>
std::string_view name_dir(type&& name) = delete;
template <base::ending_string type>
std::string_view name_base(type&& name) = delete;
template <base::ending_string type>
std::string_view name_ext(type&& name) = delete;
template <base::ending_string type>
std::string_view name_main(type&& name) = delete;

template <std::size_t n>
[[nodiscard]] base::text<n> name_dir(const base::text<n>& name) {
    return name_dir(std::string_view(name));
}
template <std::size_t n>
[[nodiscard]] base::text<n> name_base(const base::text<n>& name) {
    return name_base(std::string_view(name));
}
template <std::size_t n>
[[nodiscard]] base::text<n> name_ext(const base::text<n>& name) {
    return name_ext(std::string_view(name));
}
template <std::size_t n>
[[nodiscard]] base::text<n> name_main(const base::text<n>& name) {
    return name_main(std::string_view(name));
}

// ---- Shell-backed operations. The words are joined by single blanks, without any quoting, and cut at 500 characters;
// the shell runs that line, and the routine waits for it. How it went is neither asked nor reported.

/// "sh CMD": runs a script file.
void sh(std::string_view cmd);
/// "mv SRC DST".
void mv(std::string_view src, std::string_view dst);
/// "mkdir -p DIR".
void mkdir(std::string_view dir);

// ---- Operations on whole files

/// Removes a file; a missing one stops the run.
void delete_(std::string_view fname);

/// Copies a text file record by record, each cut or padded to 500 characters. An empty source makes no destination. A
/// source that cannot be opened stops the run as in num_file_lines; a destination that cannot be written, or that is
/// the source itself, stops it too.
void copy_old(std::string_view src, std::string_view dst);

/// Copies a file byte by byte. It never fails visibly: the copy ends where the source cannot be read or the destination
/// cannot be written, and a missing source leaves an empty destination. A file is not copied onto itself.
void copy(std::string_view src, std::string_view dst);
/// The same as copy.
void cp(std::string_view src, std::string_view dst);

// ---- Directory and process queries

/// The number of regular files in the current directory whose line in "ls -l" matches the grep pattern `dir`. Uses the
/// file ".tmp.nfile_dir" there and removes it; where that cannot be opened the run stops.
[[nodiscard]] int nfile_dir(std::string_view dir);

/// The directory of the running program's binary.
///   dir  out  the directory, cut or padded
/// A process memory map that cannot be read stops the run.
void get_exe_dir(base::text_ref dir);

/// The process identifier of the running process.
[[nodiscard]] int get_pid();

/// The number of records of a text file that contain a word; 0 for a file that cannot be opened. Of each record the
/// first 500 characters count, padded with blanks to as many.
///   word  in  what to look for, with all its characters, trailing blanks included
[[nodiscard]] int num_file_lines_word(std::string_view fname, std::string_view word);

}  // namespace displacement_generator::file

namespace displacement_generator {

/// The same as file::search_word_free.
[[nodiscard]] int search_word_free(int fid, std::string_view word, base::text_ref line);

}  // namespace displacement_generator
