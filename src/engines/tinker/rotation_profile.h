// The bond rotation energy profile: the far side of a stored dihedral is
// turned step by step through a full circle, an engine gives a single-point
// energy at each step, and the result goes to the .GEO log as a table and
// to the screen as a chart of relative energy against the dihedral. The
// sweep is the same for every engine; only the energy call, the units and
// a few words differ.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/chart.h"

namespace zentol {

struct Session;

// One step of the sweep: the dihedral the energy belongs to, the engine's
// energy (capped) and the energy above the lowest one in kJ/mol.
struct ProfilePoint {
    double dihedral = 0;
    double energy = 0;
    double relative = 0;
};

// Energies above this are taken as this: a failed step does not squash
// the plot of the others.
inline constexpr double kProfileEnergyCap = 9999.0;
double capped_energy(double energy);

// Points of a sweep with the given step in degrees: 360 / rounded step + 1,
// so that for a step dividing 360 the last point repeats the first dihedral.
int profile_point_count(float step);

// The energies relative to the lowest one, times to_kj.
void set_relative_energies(std::vector<ProfilePoint>& points, double to_kj);

// Shell sort by dihedral: the interval starts at half the number of points
// and halves down to 1; a pair is exchanged while the first dihedral is the
// larger.
void sort_by_dihedral(std::vector<ProfilePoint>& points);

// .GEO lines: a table row (dihedral F9.2, relative energy F14.2, energy
// F13.3) and the closing line " Minimum at " F7.2 " Maximum at " F7.2.
std::string profile_table_line(const ProfilePoint& p);
std::string profile_extremes_line(double min_dihedral, double max_dihedral);

// Status texts: "C1-C2-C3-C4 Dihedral " F8.2 at the start, and
// "Dihedral " F8.2 unit F9.3 at each step.
std::string start_dihedral_status(const std::string& labels, double dihedral);
std::string step_status(double dihedral, const std::string& unit, double energy);

// The chart of points sorted by dihedral: relative energy against the
// dihedral, x over the first to the last dihedral, y over the lowest to the
// highest relative energy.
Chart profile_chart(const std::vector<ProfilePoint>& sorted, const std::string& labels);

// What an engine puts into the sweep.
struct ProfileEngine {
    std::string mode_name;       // the mode's status text, "Tinker"
    std::string log_title;       // " Tinker Bond Rotation Profile for " (the job name follows)
    std::string table_header;    // the line above the table
    std::string energy_unit;     // " kcal/mol" in the step status
    double to_kj = 4.184;        // engine energy unit to kJ/mol
    std::string copy_log_to;     // a file the .GEO log is copied to at the end; "" none
    std::string finished;        // status text at the end
    // The energy of the structure as it stands, its files written; nullopt
    // when the step gave none.
    std::function<std::optional<double>(Session&)> single_point;
    // When set, a step without an energy ends the sweep: the molecule is
    // turned back, and the message says where it stopped and, in this
    // function's words, why. When not set the step keeps the energy before.
    std::function<std::string(Session&)> why_no_energy;
};

// The sweep of the stored dihedral with one engine.
void rotation_profile(Session& s, const ProfileEngine& engine);

// Tinker's single point: ANALYZE with qualifier E on the job's .xyz, and
// its "Total Potential Energy" in kcal/mol.
std::optional<double> tinker_single_point(Session& s);
// What ZENTOL.LOG says of a step without an energy.
std::string tinker_step_failure(Session& s);
ProfileEngine tinker_profile_engine();

// Tinker mode, command 2 "Bond Energy Profile".
void tinker_rotation_profile(Session& s);

}  // namespace zentol
