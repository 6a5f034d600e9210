#include "app/main_window_link.h"

namespace {

class PlainLink : public MainWindowLink {
public:
    void setMagFeedChecked(bool checked) override { m_checked = checked; }
    bool magFeedChecked() const override { return m_checked; }
    void setCallInterval(int milliseconds) override { m_interval = milliseconds; }
    int callInterval() const override { return m_interval; }

private:
    bool m_checked = false;
    int m_interval = 2000;
};

MainWindowLink *installedLink = nullptr;
std::function<void()> mainWindowOpener;

} // namespace

MainWindowLink &mainWindowLink()
{
    static PlainLink plain;
    return installedLink ? *installedLink : plain;
}

void installMainWindowLink(MainWindowLink *link) { installedLink = link; }

void setMainWindowOpener(std::function<void()> opener) { mainWindowOpener = std::move(opener); }

void openMainWindow()
{
    if (mainWindowOpener)
        mainWindowOpener();
}
