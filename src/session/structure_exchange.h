// Structure files of other programs: opened as a new job beside the file
// (File > Open, the command line, a file dropped on the window), and the
// job's molecule exported in another program's format (File > Export).
#pragma once

#include <string>

#include "structure_files/structure_import.h"
#include "structure_files/xyz_file.h"

namespace zentol {

struct Session;

// What a chosen file is to Zentol.
enum class FileKind {
    JobXyz,         // a .xyz in the job's layout, or one not there yet (a new job)
    DamagedJobXyz,  // a .xyz in the job's layout that cannot be read
    Foreign,        // anything else: read through Open Babel
};
FileKind classify_structure_file(const std::string& path, XyzProblem* problem = nullptr);

// "Input water.xyz file error" and the reason: the first lines of the
// message about a file that cannot be read.
std::string input_error_line(const std::string& path);

// A foreign file read and made ready to become the job `name` in the
// current directory.
struct PendingImport {
    std::string source;         // the file, absolute
    std::string name;           // the new job
    std::string xyz_text;       // the job's .xyz as it will be written
    bool replaces_job = false;  // a job of that name was there and the user let it go
    ImportNotes notes;
};

enum class ImportChoice { Import, OpenExisting, Refused };

// Reads the file in the current directory's terms (which must be the
// file's own) and settles the job's name: the file's base name, with "_z"
// added when the job would write over the file itself (a standard
// water.xyz becomes the job water_z). When a job of that name exists the
// user chooses between replacing its molecule and opening it as it is
// (OpenExisting, with *existing_name set). Refused: the user was told why;
// nothing has changed.
ImportChoice prepare_import(Session& s, const std::string& path, PendingImport& out, std::string* existing_name);

// Deletes the files of the job an import replaces (before its log opens).
void clear_replaced_job(const PendingImport& p);

// The prepared molecule becomes the store's (the job's name set already):
// charge and multiplicity from the file, the atoms as the job's file holds
// them; the caller saves it through the round trip.
void install_import(Session& s, const PendingImport& p);

// After the save: the log notes the source, and the user hears of what the
// conversion left out.
void report_import(Session& s, const PendingImport& p);

// File > Export: the molecule as it stands on screen, in the format the
// chosen name's extension says, with its bonds and charges.
void export_structure(Session& s);

}  // namespace zentol
