// Small 3-D algebra for the point-group search, and the symmetry operations
// themselves: an operation is known by the permutation of atoms it induces
// and whether it is proper, and carries the orthogonal matrix that best maps
// the atoms onto their partners.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace zentol::symmetry {

using Vec = std::array<double, 3>;
using Mat = std::array<Vec, 3>;   // rows

inline Vec add(const Vec& a, const Vec& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
inline Vec sub(const Vec& a, const Vec& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
inline Vec scale(const Vec& a, double f) { return {a[0] * f, a[1] * f, a[2] * f}; }
inline double dot(const Vec& a, const Vec& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline Vec cross(const Vec& a, const Vec& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double norm(const Vec& a);
Vec unit(const Vec& a);   // a itself when it has no length
// Distance of p from the line through the origin along the unit vector u.
double distance_from_axis(const Vec& p, const Vec& u);

Mat identity();
Mat transpose(const Mat& m);
Mat multiply(const Mat& a, const Mat& b);
Vec apply(const Mat& m, const Vec& v);
double determinant(const Mat& m);

Mat rotation(const Vec& axis, double angle);   // right-handed about a unit axis
Mat reflection(const Vec& normal);             // through the plane with this unit normal
Mat improper_rotation(const Vec& axis, double angle);

// Eigenvalues of a symmetric matrix in ascending order, with the unit
// eigenvectors as the rows of `vectors` (cyclic Jacobi rotations).
struct Eigen {
    Vec values{};
    Mat vectors{};
};
Eigen jacobi_eigen(Mat a);

// What a rotation matrix is: a proper or improper turn by `angle` (0..pi)
// about `axis`. An improper turn by 0 is a reflection (axis = normal), by pi
// the inversion.
struct Motion {
    int sign = 1;
    double angle = 0;
    Vec axis{0, 0, 1};
};
Motion describe(const Mat& m);

// The smallest n (up to max_n) with n * angle a whole number of turns; 0 when
// there is none.
int turn_order(double angle, int max_n = 120);

// The atoms as the search sees them: centred positions and an element index
// per atom, with the atoms of each element listed.
struct Frame {
    std::vector<Vec> pos;
    std::vector<int> kind;
    std::vector<std::vector<int>> members;
};
Frame make_frame(const std::vector<Vec>& pos, const std::vector<int>& kind);

struct Operation {
    std::vector<int> perm;   // atom i is carried onto atom perm[i]
    int sign = 1;            // +1 proper, -1 improper
    Mat matrix = identity(); // best orthogonal fit of that mapping
    double deviation = 0;    // largest |matrix x_i - x_perm[i]|
};

// The orthogonal matrix of the given handedness that best carries each atom
// onto its partner (least squares); nullopt when the atoms lie on a line.
std::optional<Mat> fit_matrix(const std::vector<Vec>& pos, const std::vector<int>& perm, int sign);
double mapping_deviation(const std::vector<Vec>& pos, const std::vector<int>& perm, const Mat& m);

// Applies a trial matrix, pairs every atom with the nearest atom of its
// element, refits the matrix to that pairing and keeps it when no atom lands
// farther than tol from its partner.
std::optional<Operation> test_operation(const Frame& f, const Mat& trial, double tol);

// A finite group of operations grown from generators; every element is
// refitted and must stay within the tolerance.
class OperationGroup {
public:
    OperationGroup(const std::vector<Vec>& pos, double tol, std::size_t max_order = 240);
    bool contains(const Operation& op) const;
    // Adds op and everything it generates with what is there; leaves the
    // group as it was and returns false when that fails the tolerance or
    // grows past the largest order.
    bool extend(const Operation& op);
    const std::vector<Operation>& elements() const { return elements_; }

private:
    const std::vector<Vec>& pos_;
    double tol_;
    std::size_t max_order_;
    std::vector<Operation> elements_;
    std::vector<Operation> generators_;
    std::set<std::pair<int, std::vector<int>>> keys_;
};

}  // namespace zentol::symmetry
