#include "platform/seams.h"

#include "platform/qt_seams.h"
#include "platform/ras_dialup.h"

namespace platform {
namespace {

template <typename Seam, typename Real>
struct Slot {
    Seam *installed = nullptr;
    Seam &get()
    {
        if (installed)
            return *installed;
        static Real real;
        return real;
    }
};

Slot<MessageBoxes, QtMessageBoxes> messageBoxSlot;
Slot<SettingsStore, QtSettingsStore> settingsSlot;
Slot<Clipboard, QtClipboard> clipboardSlot;
Slot<Beeper, QtBeeper> beeperSlot;
Slot<Screen, QtScreen> screenSlot;
#ifdef Q_OS_WIN
Slot<DialUp, RasDialUp> dialUpSlot;
#else
Slot<DialUp, NoDialUp> dialUpSlot;
#endif
Slot<Clock, QtClock> clockSlot;
Slot<Network, QtNetwork> networkSlot;
Slot<ProgramLocation, QtProgramLocation> programLocationSlot;

} // namespace

MessageBoxes &messageBoxes() { return messageBoxSlot.get(); }
SettingsStore &settingsStore() { return settingsSlot.get(); }
Clipboard &clipboard() { return clipboardSlot.get(); }
Beeper &beeper() { return beeperSlot.get(); }
Screen &screen() { return screenSlot.get(); }
DialUp &dialUp() { return dialUpSlot.get(); }
Clock &clock() { return clockSlot.get(); }
Network &network() { return networkSlot.get(); }
ProgramLocation &programLocation() { return programLocationSlot.get(); }

void install(MessageBoxes *seam) { messageBoxSlot.installed = seam; }
void install(SettingsStore *seam) { settingsSlot.installed = seam; }
void install(Clipboard *seam) { clipboardSlot.installed = seam; }
void install(Beeper *seam) { beeperSlot.installed = seam; }
void install(Screen *seam) { screenSlot.installed = seam; }
void install(DialUp *seam) { dialUpSlot.installed = seam; }
void install(Clock *seam) { clockSlot.installed = seam; }
void install(Network *seam) { networkSlot.installed = seam; }
void install(ProgramLocation *seam) { programLocationSlot.installed = seam; }

Answer msgBox(const QString &text, const QString &title, Icon icon, Buttons buttons)
{
    return messageBoxes().show({text, title, icon, buttons, false});
}

} // namespace platform
