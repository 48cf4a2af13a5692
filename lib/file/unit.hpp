#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "file.hpp"
#include "record_reader.hpp"

// What the routines of this room share about units.

namespace displacement_generator::file {

/// A free unit, connected to a file for as long as this lives.
class connection {
  public:
    connection(std::string_view fname, action what);
    ~connection();
    connection(const connection&) = delete;
    connection& operator=(const connection&) = delete;

    [[nodiscard]] int fid() const { return fid_; }
    /// Why the unit is not connected; blank when it is.
    [[nodiscard]] const std::string& reason() const { return reason_; }
    /// Stops the run with that reason, where there is one.
    void require() const;
    /// Disconnects the unit now, so that a failure is reported.
    void close(disposition what = disposition::keep) const { close_unit(fid_, what); }

  private:
    int fid_ = 0;
    std::string name_;
    std::string reason_;
};

/// The reader of a unit; null when the unit is not connected for reading.
record_reader* reader_of(int fid);

/// Takes a record that must exist; if it does not, the run stops.
///   reader   in/out  of unit fid
///   longest  in      as for next_record
///   i        in      number of the record
///   nline    in      how many there must be
std::string_view take_record(int fid, record_reader& reader, std::size_t longest, int i, int nline);

/// What a message calls the file of a unit.
std::string name_of(int fid);

}  // namespace displacement_generator::file
