// The job's running journal <job>.geo and the small side files: the bond
// list .bgl, the atom-type list _aty.lst and the per-atom value logs
// _chg.log / _spn.log.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "session/molecule_store.h"

namespace zentol {

struct Session;

// Opens the log: anew with first_line as its first record, or, when
// continuing, for appending to what is there.
void open_job_log(Session& s, bool continue_log, const std::string& first_line);
void close_job_log(Session& s);
// Appends one record; nothing happens while the log is closed.
void log_line(Session& s, const std::string& record);

std::string format_bond_list(const Store& st);
void write_bond_list(Session& s);

std::string format_type_list(const Store& st);
void write_type_list(Session& s);

// Values of a _chg.log/_spn.log: a '#' heading, then a value after the
// 4-column label on each line, up to a line shorter than 5 characters.
// nullopt when the file can't be opened.
std::optional<std::vector<double>> read_value_log(const std::string& name);
std::vector<double> parse_value_log(const std::vector<std::string>& lines);

}  // namespace zentol
