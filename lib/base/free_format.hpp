#pragma once

#include <string_view>

#include "text.hpp"

// Free-format (list-directed) fields of one record: separated by blanks, tabs or a comma with any blanks about it; a
// "/" ends the record's fields.

namespace displacement_generator::base {

/// What next_field found: a value; nothing between two commas; or the end of the record or a "/".
enum class field_kind { value, null, end };

/// Takes the next field off a record.
///   rest   in/out  the record from where the last call left it; afterwards what follows the field and its separator.
///                  It is left at the "/" or at the end of the record where the fields are over.
///   field  out     the characters of the field, a part of the record; empty unless the result is `value`
[[nodiscard]] field_kind next_field(std::string_view& rest, std::string_view& field);

/// Takes the next text item off a record, cut or padded to the length of `item`. An item that begins with an apostrophe
/// or a quotation mark runs to the same mark again, two of which in a row stand for one of the text; such a text may
/// hold separators. A mark that is never closed counts as `end`.
///   rest  in/out  as for next_field
///   item  out     unchanged unless the result is `value`
[[nodiscard]] field_kind next_text(std::string_view& rest, text_ref item);

/// What reading a number came to; the variable is unchanged unless it is `ok`.
enum class number_status { ok, not_a_number, out_of_range };

/// Reads a whole field as a real: an optional sign, digits with or without a decimal point, and optionally an exponent
/// after E, e, D or d with its own optional sign. The result is the double nearest to what is written; a value too
/// small for one is a zero of its sign, a value too large is out of range.
[[nodiscard]] number_status read_real(std::string_view field, double& value);

/// Reads a whole field as a 4-byte integer: an optional sign and digits.
[[nodiscard]] number_status read_integer(std::string_view field, int& value);

}  // namespace displacement_generator::base
