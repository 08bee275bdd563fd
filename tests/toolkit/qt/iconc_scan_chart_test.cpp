// An ICONC bond scan shown in the real chart window: the fake engine's
// Morse curve, the step of its minimum in the title, and the picture of the
// window taken while the "Note the Min. and Max." question is up. With
// ZENTOL_SHOT_DIR set the picture is kept there as iconc_scan.png.
#include <cmath>
#include <cstdlib>
#include <filesystem>

#include <QChart>
#include <QChartView>
#include <QImage>
#include <QLineEdit>
#include <QLineSeries>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <gtest/gtest.h>

#include "display/renderer.h"
#include "engines/iconc/iconc_mode.h"
#include "engines/iconc/iconc_search.h"
#include "session/config.h"
#include "session/session.h"
#include "support/test_support.h"
#include "toolkit/qt/qt_test_support.h"
#include "toolkit/qt/qt_toolkit.h"

namespace zentol {
namespace {

namespace fs = std::filesystem;

// The fake engine's installation and a job of Fe-H 1.7 apart, the bond stored.
void prepare_job(Session& s, const testing::TempDir& dir) {
    s.inst = installation_at(dir / "inst", dir / "work", ZENTOL_DATA_DIR);
    prepare_installation(s.inst);
    const std::string bin = dir / "iconc";
    fs::create_directories(bin);
    const std::string fakes = std::string(ZENTOL_TEST_DATA) + "/../engines/iconc/";
    fs::copy_file(fakes + "fake_inputc.sh", bin + "/inputc");
    fs::copy_file(fakes + "fake_iconc.sh", bin + "/iconc");
    for (const char* table : kIconcTables) testing::write_file(bin + "/" + table, "table\n");
    s.engines.values["iconc_dir"] = bin;
    fs::create_directories(dir / "job");
    fs::current_path(dir / "job");
    testing::write_file(dir / "job/ICONV.DAT", "           1           2\n");
    Store& st = s.store;
    st.natoms = 2;
    st.atom_label[1] = make_label("Fe");
    st.atom_label[2] = make_label("H");
    st.atom_rec[2][kX] = 1.7f;
    st.nbr(1, 1) = 2;
    st.nbr(2, 1) = 1;
    st.conn_count(1) = st.conn_count(2) = 1;
    s.job.name = "feh";
}

TEST(QtIconcScan, TheScanPlotShowsTheEnergyWellAndItsMinimum) {
    testing::TempDir dir;
    QtToolkit tk;
    NullRenderer renderer;
    Session s(tk, renderer);
    prepare_job(s, dir);
    tk.set_ui_dir(s.inst.data_dir + "/ui");
    tk.window_open(800, 600, "Zentol");
    unsetenv("FAKE_ICONC_ENERTOT");

    IconcState state;
    state.programs = find_iconc_programs(s);
    ASSERT_TRUE(state.programs.missing.empty()) << state.programs.missing;
    state.atoms = {IconcAtom{make_label("FE"), 0, 0, 0, true}, IconcAtom{make_label("H"), 1.7f, 0, 0, false}};
    state.prepared = true;
    state.options.calc_type = 2;
    state.options.steps = 30;
    ASSERT_TRUE(copy_iconc_tables(s, state));

    QImage shot;
    // The question comes after all 30 runs: it is waited for up to a minute.
    qt_testing::on_modal(
        [&](QDialog* box) {
            if (tk.chart_window()) shot = tk.chart_window()->grab().toImage();
            auto* question = qobject_cast<QMessageBox*>(box);
            ASSERT_NE(question, nullptr);
            question->button(QMessageBox::No)->click();   // nothing goes to the printer
        },
        3000);
    iconc_bond_scan(s, state);

    ASSERT_NE(tk.chart_window(), nullptr);
    EXPECT_TRUE(tk.chart_window()->isVisible());
    QChart* chart = tk.chart_window()->view()->chart();
    // Steps 7 and 8 (1.98 and 2.02) stand either side of the curve's bottom
    // at 2.0; the curve rises more slowly outwards, so 8 is the lower.
    EXPECT_EQ(chart->title(), "FE-H Min at step 8");
    ASSERT_EQ(chart->series().size(), 1);
    auto* series = qobject_cast<QLineSeries*>(chart->series().first());
    ASSERT_NE(series, nullptr);
    ASSERT_EQ(series->count(), 30);
    EXPECT_NEAR(series->at(7).x(), 2.02, 1e-4);
    EXPECT_LT(series->at(7).y(), series->at(6).y());
    EXPECT_LT(series->at(7).y(), series->at(29).y());
    // The molecule kept its bond: Apply Scan was off.
    EXPECT_FLOAT_EQ(s.store.atom_rec[2][kX], 1.7f);

    ASSERT_FALSE(shot.isNull());
    EXPECT_GT(shot.width(), 200);
    if (const char* keep = std::getenv("ZENTOL_SHOT_DIR")) shot.save(QString(keep) + "/iconc_scan.png");
    remove_iconc_scratch(state);
    tk.close_all();
}

TEST(QtIconcScan, TheOptionsDialogOffersItsDefaultsAndRunsWithWhatWasTyped) {
    QtToolkit tk;
    NullRenderer renderer;
    Session s(tk, renderer);
    tk.set_ui_dir(ZENTOL_DATA_DIR "/ui");
    tk.window_open(800, 600, "Zentol");
    s.flags.total_charge = -1;
    IconcOptions options;
    QImage shot;
    QString step, steps, ediff, charge;
    bool energy = false, off = false;
    qt_testing::on_modal([&](QDialog* d) {
        shot = d->grab().toImage();
        step = d->findChild<QLineEdit*>("field_1071")->text();
        steps = d->findChild<QLineEdit*>("field_1102")->text();
        ediff = d->findChild<QLineEdit*>("field_1008")->text();
        charge = d->findChild<QLineEdit*>("field_1101")->text();
        energy = d->findChild<QRadioButton*>("field_1053")->isChecked();
        off = d->findChild<QRadioButton*>("field_1051")->isChecked();
        d->findChild<QRadioButton*>("field_1054")->setChecked(true);
        d->findChild<QLineEdit*>("field_1102")->setText("25");
        d->findChild<QPushButton*>("field_3")->click();   // Run Iconc
    });
    EXPECT_EQ(ask_iconc_options(s, options), 3);
    EXPECT_EQ(step, "0.04");
    EXPECT_EQ(steps, "60");
    EXPECT_EQ(ediff, "0.0040");
    EXPECT_EQ(charge, "-1");
    EXPECT_TRUE(energy && off);
    EXPECT_EQ(options.calc_type, 2);
    EXPECT_EQ(options.steps, 25);
    EXPECT_EQ(s.flags.total_charge, -1);
    ASSERT_FALSE(shot.isNull());
    if (const char* keep = std::getenv("ZENTOL_SHOT_DIR")) shot.save(QString(keep) + "/iconc_options.png");
    tk.close_all();
}

}  // namespace
}  // namespace zentol
