// Lewis structures, oxidation states, donor bonds and the metal report, on
// molecules built by hand in a store.
#include "analysis/lewis.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "session/store_ops.h"

using namespace zentol;

namespace {

// Atoms and bonds go into a store the way the program holds them; the bond
// list is then rebuilt from the connectivity rows.
class Molecule {
public:
    Molecule() : st_(std::make_unique<Store>()) { element_lookup(*st_, nullptr, "", kLookupConfirmAll); }

    int atom(const std::string& label, float x = 0, float y = 0, float z = 0) {
        const int i = ++st_->natoms;
        st_->atom_label[i] = make_label(label);
        st_->atom_rec[i][kX] = x;
        st_->atom_rec[i][kY] = y;
        st_->atom_rec[i][kZ] = z;
        return i;
    }
    void bond(int a, int b) {
        st_->nbr(a, ++st_->conn_count(a)) = b;
        st_->nbr(b, ++st_->conn_count(b)) = a;
    }
    int bonded(const std::string& label, int to) {
        const int i = atom(label);
        bond(to, i);
        return i;
    }
    // A benzene ring on atom `to`; returns the ring carbon bonded to it.
    int phenyl(int to) {
        int c[6];
        for (int& k : c) k = atom("C");
        bond(to, c[0]);
        for (int k = 0; k < 6; ++k) bond(c[k], c[(k + 1) % 6]);
        for (int k = 1; k < 6; ++k) bonded("H", c[k]);
        return c[0];
    }
    // A carbon with three hydrogens on atom `to`.
    int methyl(int to) {
        const int c = bonded("C", to);
        for (int h = 0; h < 3; ++h) bonded("H", c);
        return c;
    }
    LewisInput input(int charge, int anion_atom = 0) {
        rebuild_bond_list(*st_);
        LewisInput in = lewis_input_from(*st_, charge);
        in.anion_atom = anion_atom;
        return in;
    }

private:
    std::unique_ptr<Store> st_;
};

int bond_of(const LewisInput& in, int a, int b) {
    for (std::size_t k = 0; k < in.bonds.size(); ++k)
        if ((in.bonds[k][0] == a && in.bonds[k][1] == b) || (in.bonds[k][0] == b && in.bonds[k][1] == a))
            return static_cast<int>(k) + 1;
    return 0;
}

int order_of(const LewisInput& in, const LewisResult& r, int a, int b) {
    const int k = bond_of(in, a, b);
    return k ? r.order[k] : -1;
}

// Every atom of a closed-shell result ends with its octet (2 for hydrogen)
// or, for a hypervalent one, more.
void expect_closed_shell(const LewisResult& r) {
    EXPECT_TRUE(r.radicals.empty());
    for (int i = 1; i <= r.natoms(); ++i) EXPECT_GE(r.tec[i], r.atn[i] == 1 ? 2 : 8) << "atom " << i;
}

LewisInput water() {
    Molecule m;
    const int o = m.atom("O1", 0, 0, 0.12f);
    m.bond(o, m.atom("H1", 0, 0.76f, -0.48f));
    m.bond(o, m.atom("H2", 0, -0.76f, -0.48f));
    return m.input(0);
}

}  // namespace

TEST(Lewis, WaterGivesTwoLonePairsAndOxidationStates) {
    const LewisInput in = water();
    ASSERT_EQ(lewis_refusal(in), "");
    const LewisResult r = lewis_analysis(in);
    ASSERT_EQ(r.ierr, 0);
    EXPECT_EQ(r.order[1], 1);
    EXPECT_EQ(r.order[2], 1);
    EXPECT_EQ(r.lone_electrons(1), 4);
    EXPECT_EQ(r.lone_electrons(2), 0);
    EXPECT_EQ(r.os[1], -2);
    EXPECT_EQ(r.os[2], 1);
    EXPECT_EQ(r.os[3], 1);
    EXPECT_EQ(r.fc[1], 0);
    EXPECT_FALSE(r.exception);
    EXPECT_TRUE(r.donors.empty());
    expect_closed_shell(r);
    EXPECT_TRUE(cbc_lines(in, r).empty());

    const std::vector<std::string> log = lewis_log_lines(in, r);
    const std::vector<std::string> want_log = {
        "O1     1 H1     2 B.ord    1",
        "O1     1 H2     3 B.ord    1",
        "At. no. ATN V.e  TEC  nbe  Chg    FC   B.e OS",
        "O1     1   8   6   8   4   0   0   2  -2",
        "H1     2   1   1   2   0   0   0   1   1",
        "H2     3   1   1   2   0   0   0   1   1",
    };
    EXPECT_EQ(log, want_log);
}

TEST(Lewis, WaterBrtFileInItsLineOrder) {
    const LewisInput in = water();
    const std::vector<std::string> want = {
        "TITL  LEWIS   3   2",
        "CELL  0.71069 1. 1. 1. 90. 90. 90.",
        "LATT -1",
        "FVAR",
        "O1   1    0.00000   0.00000   0.12000 11. .05",
        "H1   1    0.00000   0.76000  -0.48000 11. .05",
        "H2   1    0.00000  -0.76000  -0.48000 11. .05",
        "BM   1    0.00000   0.38000  -0.18000 11. .05",
        "BM   1    0.00000  -0.38000  -0.18000 11. .05",
        "HKLF 4",
        "ATOM   3",
        "Name.  no.  LPe  chg  OS  Atno  coor",
        "O1     1   4   0  -2   8   2",
        "H1     2   0   0   1   1   1",
        "H2     3   0   0   1   1   1",
        "ENDATOM",
        "BOND   2",
        "        atom        atom           bond order",
        "   1   2   1",
        "   1   3   1",
        "ENDBOND",
        "ALLEN   3",
        "   1   3.610",
        "   2   2.300",
        "   3   2.300",
        "ENDALLEN",
        "DONORBOND   0",
        "ENDDONOR",
    };
    EXPECT_EQ(lewis_brt_lines(in, lewis_analysis(in)), want);
}

TEST(Lewis, NitromethaneSeparatesChargesWithADonorBond) {
    Molecule m;
    const int c = m.atom("C1");
    const int n = m.bonded("N1", c);
    const int o1 = m.bonded("O1", n);
    const int o2 = m.bonded("O2", n);
    for (int h = 0; h < 3; ++h) m.bonded("H", c);
    const LewisInput in = m.input(0);
    const LewisResult r = lewis_analysis(in);
    ASSERT_EQ(r.ierr, 0);
    EXPECT_EQ(order_of(in, r, n, o1), 2);
    EXPECT_EQ(order_of(in, r, n, o2), 1);
    EXPECT_EQ(order_of(in, r, c, n), 1);
    EXPECT_EQ(r.fc[n], 1);
    EXPECT_EQ(r.fc[o1], 0);
    EXPECT_EQ(r.fc[o2], -1);
    EXPECT_EQ(r.lone_electrons(o2), 6);
    expect_closed_shell(r);
    // Formal charges count in the oxidation states: N +3, C -2.
    EXPECT_EQ(r.os[n], 3);
    EXPECT_EQ(r.os[c], -2);
    EXPECT_EQ(r.os[o2], -2);

    ASSERT_EQ(r.donors.size(), 1u);
    EXPECT_EQ(r.donors[0].donor, o2);
    EXPECT_EQ(r.donors[0].acceptor, n);
    EXPECT_EQ(r.net[n], 0);
    EXPECT_EQ(r.net[o2], 0);
    const std::vector<std::string> log = lewis_log_lines(in, r);
    EXPECT_EQ(log.front(), "Donor Bond O2     4   0 N1     2   0");
    const std::vector<std::string> brt = lewis_brt_lines(in, r);
    EXPECT_EQ(brt[brt.size() - 3], "DONORBOND   1");
    EXPECT_EQ(brt[brt.size() - 2], "   4   2");
    // The file shows the total of ionic and formal charge.
    EXPECT_NE(std::find(brt.begin(), brt.end(), "N1     2   0   1   3   7   3"), brt.end());

    const std::vector<std::string> text = lewis_table_text(in, r);
    EXPECT_EQ(text[0], "Lewis structure: 7 atoms, 6 bonds, charge 0");
    EXPECT_NE(std::find(text.begin(), text.end(), "N1       2    0    1    3    7    3"), text.end());
    EXPECT_NE(std::find(text.begin(), text.end(), "N1       2  O1       3     2"), text.end());
    EXPECT_EQ(text.back(), "O2       4  N1       2");
}

TEST(Lewis, NeutralGlycinePlacesAmmoniumAndCarboxylate) {
    Molecule m;
    const int n = m.atom("N1");
    const int ca = m.bonded("C1", n);
    const int cc = m.bonded("C2", ca);
    const int o1 = m.bonded("O1", cc);
    const int o2 = m.bonded("O2", cc);
    for (int h = 0; h < 3; ++h) m.bonded("H", n);
    for (int h = 0; h < 2; ++h) m.bonded("H", ca);
    const LewisInput in = m.input(0);
    const LewisResult r = lewis_analysis(in);
    ASSERT_EQ(r.ierr, 0);
    EXPECT_EQ(r.chg[n], 1);
    EXPECT_EQ(r.chg[o1], 0);
    EXPECT_EQ(r.chg[o2], -1);
    EXPECT_EQ(order_of(in, r, cc, o1), 2);
    EXPECT_EQ(order_of(in, r, cc, o2), 1);
    EXPECT_EQ(order_of(in, r, n, ca), 1);
    EXPECT_EQ(r.os[n], -3);
    EXPECT_EQ(r.os[cc], 3);
    expect_closed_shell(r);
    EXPECT_TRUE(r.donors.empty());   // the charged atoms are not bonded

    // A boron next to the nitrogen (an amine-borane) stops the ammonium
    // charge; the carboxylate keeps its own.
    Molecule b;
    const int bn = b.atom("N1");
    b.bonded("B1", bn);
    for (int h = 0; h < 3; ++h) b.bonded("H", bn);
    const LewisResult rb = lewis_analysis(b.input(0));
    EXPECT_EQ(rb.chg[bn], 0);
}

TEST(Lewis, PositiveChargePlacement) {
    // Me4N+: no N-H, so the charge goes to the atom with more neighbours
    // than its valence.
    Molecule m;
    const int n = m.atom("N1");
    for (int k = 0; k < 4; ++k) m.methyl(n);
    const LewisInput in = m.input(1);
    const LewisResult r = lewis_analysis(in);
    ASSERT_EQ(r.ierr, 0);
    EXPECT_EQ(r.chg[n], 1);
    for (int i = 2; i <= r.natoms(); ++i) EXPECT_EQ(r.chg[i], 0) << i;
    for (int k = 1; k <= static_cast<int>(in.bonds.size()); ++k) EXPECT_EQ(r.order[k], 1);
    EXPECT_EQ(r.os[n], -3);
    expect_closed_shell(r);

    // Methylammonium: the N-H rule.
    Molecule a;
    const int an = a.atom("N1");
    a.methyl(an);
    for (int h = 0; h < 3; ++h) a.bonded("H", an);
    EXPECT_EQ(lewis_analysis(a.input(1)).chg[an], 1);

    // Methane cannot carry a charge: ierr 1, and the log says only that.
    Molecule c;
    c.methyl(c.atom("H"));
    for (int q : {1, 2}) {
        const LewisInput cin = c.input(q);
        const LewisResult rc = lewis_analysis(cin);
        EXPECT_EQ(rc.ierr, 1) << q;
        const std::vector<std::string> log = lewis_log_lines(cin, rc);
        ASSERT_EQ(log.size(), 1u);
        EXPECT_EQ(log[0].rfind(" Lewis IERR =", 0), 0u);
        EXPECT_EQ(log[0].back(), '1');
        EXPECT_TRUE(cbc_lines(cin, rc).empty());
    }
}

TEST(Lewis, NegativeChargePlacement) {
    // Hydroxide, nothing marked: the first atom with a bond to spare.
    Molecule h;
    const int o = h.atom("O1");
    h.bonded("H1", o);
    const LewisResult rh = lewis_analysis(h.input(-1));
    ASSERT_EQ(rh.ierr, 0);
    EXPECT_EQ(rh.chg[o], -1);
    EXPECT_EQ(rh.lone_electrons(o), 6);
    EXPECT_EQ(rh.os[o], -2);

    // Sulfate with an oxygen marked: two terminal oxygens take the charges,
    // then the hypervalent sulfur gives up its double bonds for charges.
    Molecule s;
    const int sx = s.atom("S1");
    int ox[4];
    for (int& k : ox) k = s.bonded("O", sx);
    const LewisInput sin = s.input(-2, ox[3]);
    const LewisResult rs = lewis_analysis(sin);
    ASSERT_EQ(rs.ierr, 0);
    EXPECT_EQ(rs.chg[sx], 2);
    for (int k : ox) {
        EXPECT_EQ(rs.chg[k], -1);
        EXPECT_EQ(order_of(sin, rs, sx, k), 1);
        EXPECT_EQ(rs.os[k], -2);
    }
    EXPECT_EQ(rs.os[sx], 6);
    expect_closed_shell(rs);

    // Methane with -2 and nothing marked: no terminal atoms of an anion
    // element to take both charges.
    Molecule m;
    m.methyl(m.atom("H"));
    EXPECT_EQ(lewis_analysis(m.input(-2)).ierr, 2);
}

TEST(Lewis, HypervalentSulfurBecomesAnYlide) {
    Molecule m;
    const int s = m.atom("S1");
    const int o = m.bonded("O1", s);
    m.methyl(s);
    m.methyl(s);
    const LewisInput in = m.input(0);
    const LewisResult r = lewis_analysis(in);
    ASSERT_EQ(r.ierr, 0);
    EXPECT_EQ(order_of(in, r, s, o), 1);
    EXPECT_EQ(r.chg[s], 1);
    EXPECT_EQ(r.chg[o], -1);
    EXPECT_EQ(r.os[s], 0);
    EXPECT_EQ(r.os[o], -2);
    expect_closed_shell(r);
    ASSERT_EQ(r.donors.size(), 1u);
    EXPECT_EQ(r.donors[0].donor, o);
}

TEST(Lewis, HeavyAtomsBondToAromaticRingsBySingleBonds) {
    // With the oxygen or sulfur last, the P-C and S-C bonds come first in the
    // bond list; the rings still pair up among themselves and the heavy atom
    // gives its extra bond to the chalcogen as a charge pair.
    Molecule so;
    const int s = so.atom("S1");
    const int ca = so.phenyl(s), cb = so.phenyl(s);
    const int o = so.bonded("O1", s);
    const LewisInput sin = so.input(0);
    const LewisResult rs = lewis_analysis(sin);
    EXPECT_EQ(order_of(sin, rs, s, ca), 1);
    EXPECT_EQ(order_of(sin, rs, s, cb), 1);
    EXPECT_EQ(order_of(sin, rs, s, o), 1);
    EXPECT_EQ(rs.chg[s] + rs.fc[s], 1);
    EXPECT_EQ(rs.chg[o] + rs.fc[o], -1);
    expect_closed_shell(rs);

    Molecule ps;
    const int p = ps.atom("P1");
    int ipso[3];
    for (int& c : ipso) c = ps.phenyl(p);
    const int sx = ps.bonded("S1", p);
    const LewisInput pin = ps.input(0);
    const LewisResult rp = lewis_analysis(pin);
    for (int c : ipso) EXPECT_EQ(order_of(pin, rp, p, c), 1);
    EXPECT_EQ(order_of(pin, rp, p, sx), 1);
    EXPECT_EQ(rp.chg[sx] + rp.fc[sx], -1);
    EXPECT_EQ(rp.os[p], 5);
    expect_closed_shell(rp);
}

TEST(Lewis, ArsenicAndTelluriumMethylsAreOctetExceptions) {
    Molecule m;
    const int as = m.atom("As1");
    for (int k = 0; k < 5; ++k) m.methyl(as);
    const LewisInput in = m.input(0);
    const LewisResult r = lewis_analysis(in);
    ASSERT_EQ(r.ierr, 0);
    EXPECT_TRUE(r.exception);
    EXPECT_EQ(r.messages, std::vector<std::string>{"Octet rule exception AsMe5"});
    for (int k = 1; k <= static_cast<int>(in.bonds.size()); ++k) EXPECT_EQ(r.order[k], 1) << k;
    EXPECT_EQ(r.tec[as], 10);
    EXPECT_EQ(r.chg[as], 0);
    expect_closed_shell(r);
    const std::vector<std::string> brt = lewis_brt_lines(in, r);
    EXPECT_EQ(brt[0], "IEXCPT");
    EXPECT_EQ(brt[1].substr(0, 11), "TITL  LEWIS");

    Molecule t;
    const int te = t.atom("Te1");
    for (int k = 0; k < 6; ++k) t.methyl(te);
    const LewisResult rt = lewis_analysis(t.input(0));
    EXPECT_EQ(rt.messages, std::vector<std::string>{"Octet rule exception TeMe6"});
    EXPECT_EQ(rt.tec[te], 12);

    // The arsonium ylide Me3As=CH2: the exception holds without a message
    // and keeps the As=C double bond that would else become As+ C-.
    Molecule y;
    const int ay = y.atom("As1");
    for (int k = 0; k < 3; ++k) y.methyl(ay);
    const int ch2 = y.bonded("C9", ay);
    for (int h = 0; h < 2; ++h) y.bonded("H", ch2);
    const LewisInput yin = y.input(0);
    const LewisResult ry = lewis_analysis(yin);
    EXPECT_TRUE(ry.exception);
    EXPECT_TRUE(ry.messages.empty());
    EXPECT_EQ(order_of(yin, ry, ay, ch2), 2);
    EXPECT_EQ(ry.chg[ay], 0);
    EXPECT_EQ(lewis_brt_lines(yin, ry)[0], "IEXCPT");
}

TEST(Lewis, CovalentBondClassification) {
    // Ni(CO)4: four carbonyls, each a donor to the nickel; the carbonyl's
    // own C(-) O(+) pair is a donor bond as in free CO.
    Molecule m;
    const int ni = m.atom("Ni1");
    int cs[4];
    for (int& c : cs) c = m.bonded("C", ni);
    for (int c : cs) m.bonded("O", c);
    const LewisInput in = m.input(0);
    const LewisResult r = lewis_analysis(in);
    ASSERT_EQ(r.ierr, 0);
    ASSERT_EQ(r.donors.size(), 8u);
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(r.donors[k].donor, cs[k]);
        EXPECT_EQ(r.donors[k].acceptor, ni);
    }
    for (int c : cs) EXPECT_EQ(order_of(in, r, ni, c), 1);
    expect_closed_shell(r);
    EXPECT_EQ(cbc_lines(in, r), std::vector<std::string>{"Covalent Bond Classification NiL4  OS  0"});

    // LaCl3: chlorides count one electron each; lanthanum, without an Allen
    // value, is less electronegative than chlorine.
    Molecule la;
    const int lx = la.atom("La1");
    for (int k = 0; k < 3; ++k) la.bonded("Cl", lx);
    const LewisInput lin = la.input(0);
    const LewisResult lr = lewis_analysis(lin);
    EXPECT_EQ(lr.os[lx], 3);
    EXPECT_EQ(cbc_lines(lin, lr), std::vector<std::string>{"Covalent Bond Classification LaX3  OS  3"});

    // The layout of a charged complex.
    EXPECT_EQ(cbc_line("M", {2, 1, 1}), "Covalent Bond Classification  [ML2X1]1+  OS  2");
    EXPECT_EQ(cbc_line("Fe", {0, 4, -2}), "Covalent Bond Classification  [FeX4]2-  OS  2");
    EXPECT_EQ(cbc_line("Zn", {0, 0, 0}), "Covalent Bond Classification Zn  OS  0");
}

TEST(Lewis, LigandKindsOfOxoBridgingAndSideOnLigands) {
    // OsO4 and permanganate: each oxo O shares two electrons, a double bond.
    Molecule os;
    const int osm = os.atom("Os1");
    for (int k = 0; k < 4; ++k) os.bonded("O", osm);
    const LewisInput oin = os.input(0);
    const LewisResult ro = lewis_analysis(oin);
    EXPECT_EQ(cbc_lines(oin, ro), std::vector<std::string>{"Covalent Bond Classification OsX8  OS  8"});
    for (int k = 1; k <= 4; ++k) EXPECT_EQ(ro.order[k], 2);
    expect_closed_shell(ro);
    Molecule mn;
    const int mnm = mn.atom("Mn1");
    for (int k = 0; k < 4; ++k) mn.bonded("O", mnm);
    const LewisInput min = mn.input(-1);
    const LewisResult rm = lewis_analysis(min);
    EXPECT_EQ(cbc_lines(min, rm), std::vector<std::string>{"Covalent Bond Classification  [MnX8]1-  OS  7"});
    EXPECT_EQ(rm.os[mnm], 7);

    // Al2Cl6: a bridging chloride is X to one aluminium and L to the other,
    // and both come out alike.
    Molecule al;
    const int a1 = al.atom("Al1"), a2 = al.atom("Al2");
    for (int k = 0; k < 2; ++k) {
        const int bridge = al.bonded("Cl", a1);
        al.bond(bridge, a2);
        al.bonded("Cl", a1);
        al.bonded("Cl", a2);
    }
    const LewisInput ain = al.input(0);
    const LewisResult ra = lewis_analysis(ain);
    EXPECT_EQ(cbc_lines(ain, ra), std::vector<std::string>(2, "Covalent Bond Classification AlL1X3  OS  3"));
    expect_closed_shell(ra);

    // Zeise's anion [PtCl3(C2H4)]-: ethylene side-on is one L; its two
    // contacts are drawn single, its C=C stays double.
    Molecule z;
    const int pt = z.atom("Pt1");
    for (int k = 0; k < 3; ++k) z.bonded("Cl", pt);
    const int c1 = z.bonded("C1", pt), c2 = z.bonded("C2", pt);
    z.bond(c1, c2);
    for (int c : {c1, c2})
        for (int h = 0; h < 2; ++h) z.bonded("H", c);
    const LewisInput zin = z.input(-1);
    const LewisResult rz = lewis_analysis(zin);
    EXPECT_EQ(cbc_lines(zin, rz), std::vector<std::string>{"Covalent Bond Classification  [PtL1X3]1-  OS  2"});
    EXPECT_EQ(order_of(zin, rz, c1, c2), 2);
    EXPECT_EQ(order_of(zin, rz, pt, c1), 1);
    EXPECT_EQ(rz.metal_bond[bond_of(zin, pt, c2)], MetalBond::contact);
    EXPECT_EQ(rz.os[pt], 2);
    EXPECT_EQ(rz.os[c1], -2);
    EXPECT_EQ(rz.tec[pt], 16);
    expect_closed_shell(rz);
}

TEST(Lewis, OnlyOneConnectedMolecule) {
    Molecule two;
    const int o1 = two.atom("O1");
    two.bonded("H1", o1);
    two.bonded("H2", o1);
    const int o2 = two.atom("O2");
    two.bonded("H3", o2);
    two.bonded("H4", o2);
    EXPECT_EQ(lewis_refusal(two.input(0)), "Lewis analysis needs one connected molecule; this one falls apart");
    EXPECT_EQ(lewis_refusal(LewisInput{}), "Lewis analysis needs one molecule of at most 300 atoms");
}

TEST(Lewis, StoreInputCountsDeuteriumAsHydrogen) {
    Molecule m;
    const int o = m.atom("O1");
    m.bonded("D1", o);
    m.bonded("H1", o);
    const LewisInput in = m.input(0);
    EXPECT_EQ(in.atoms[1].atn, 1);
    EXPECT_FLOAT_EQ(in.atoms[1].en, in.atoms[2].en);
    const LewisResult r = lewis_analysis(in);
    EXPECT_EQ(r.os[2], 1);
    EXPECT_EQ(r.os[o], -2);
}
