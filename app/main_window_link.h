#pragma once
// The places where start-up and the settings load reach up into the main
// window: opening it, its "Enable" magazine check box and the interval of its
// next-call timer. The main window installs its link when it is created;
// without one, a plain holder keeps the values so that app/ works windowless.

#include <functional>

class MainWindowLink {
public:
    virtual ~MainWindowLink() = default;
    virtual void setMagFeedChecked(bool checked) = 0;
    virtual bool magFeedChecked() const = 0;
    virtual void setCallInterval(int milliseconds) = 0;
    virtual int callInterval() const = 0;
};

MainWindowLink &mainWindowLink();
void installMainWindowLink(MainWindowLink *link); // nullptr: back to the plain holder

// Creates and shows the main window; set by the program's entry point.
void setMainWindowOpener(std::function<void()> opener);
void openMainWindow();
