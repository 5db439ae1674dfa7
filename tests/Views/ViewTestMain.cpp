#include <gtest/gtest.h>

#include "Views/DesktopApp.hpp"

#include <QApplication>

#include <cstdlib>
#include <string>

// The window's tests need a Qt application, rendered offscreen unless told otherwise, and a
// settings and data folder of their own.
int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    std::string scratch = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") + "/tarnwick-view-tests-" + std::to_string(getpid());
    setenv("XDG_CONFIG_HOME", (scratch + "/config").c_str(), 1);
    setenv("XDG_DATA_HOME", (scratch + "/data").c_str(), 1);
    setenv("XDG_CACHE_HOME", (scratch + "/cache").c_str(), 1);
    QApplication application(argc, argv);
    tarnwick::DesktopApp::applyStyle(application);
    int status = RUN_ALL_TESTS();
    std::string cleanup = "rm -rf '" + scratch + "'";
    (void)!std::system(cleanup.c_str());
    return status;
}
