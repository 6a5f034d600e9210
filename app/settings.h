#pragma once
// The settings record, the magazine arrays and their persistence in the
// per-user settings store (application "Tolmara2", section "Startup").

#include "app/value_holders.h"

#include <QString>

namespace store {
inline const QString Application = QStringLiteral("Tolmara2");
inline const QString Section = QStringLiteral("Startup");
QString read(const QString &key, const QString &defaultValue);
// On disk when it returns, or at the end of the batch that is open.
void write(const QString &key, const QString &value);
// Writes made while a Batch lives reach the disk together when it goes.
class Batch {
public:
    Batch();
    ~Batch();
    Batch(const Batch &) = delete;
    Batch &operator=(const Batch &) = delete;
};
} // namespace store

struct Settings {
    clsStoreBool SaveFullAuto;
    clsStoreBool BeepOK;
    clsStoreBool OkToInterrupt;
    clsStoreBool AutoRename;
    clsStoreBool SaveAsSeries;
    clsStoreBool LimitApplied;
    clsStoreBool ToolTips;
    clsStoreBool CannotConnect;
    clsStoreBool AddDelay;
    clsStoreLong IncLimit;
    clsStoreLong TimeOut;
    clsStoreInt BiteSize;
    clsStoreVar TempDir;
    clsStoreVar SaveDir;
    clsStoreStr SeriesId;
    // Held for this run only, never stored.
    clsStoreBool ExitAtLimit;
    clsStoreBool HangUpAtLimit;
    clsStoreBool ConfigChanged;
};

// The magazine: up to ten start addresses with their masks, groups and directions.
struct MagazineArrays {
    clsStoreStrArray Round;
    clsStoreStrArray Mask;
    clsStoreStrArray Group;
    clsStoreBoolArray Direct;
    qint16 MagRowCount = 0;
};

Settings &settings();
MagazineArrays &magazine();
// Starts the record and the magazine afresh, as a new program would have them.
void resetSettings();

void LoadBoolSetting(const QString &key, clsStoreBool &holder, const QString &defaultValue);
void SaveBoolSetting(const clsStoreBool &holder, const QString &key);

void LookUpRegistry();
void UpdateRegistry();
QString NextSeriesNumber();
void SaveMagURLs();
