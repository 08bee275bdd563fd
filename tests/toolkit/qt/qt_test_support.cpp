#include "toolkit/qt/qt_test_support.h"

namespace {

// The test program's QApplication, made before the first test and kept to
// the end of the process.
class QtApplicationEnv : public ::testing::Environment {
public:
    void SetUp() override {
        if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
            qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "test_qt";
        static char* argv[] = {name, nullptr};
        if (!qApp) new QApplication(argc, argv);
    }
};
[[maybe_unused]] const auto* const qt_env = ::testing::AddGlobalTestEnvironment(new QtApplicationEnv);

}  // namespace
