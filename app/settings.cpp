#include "app/settings.h"

#include "app/bug_alert.h"
#include "app/main_window_link.h"
#include "app/numbers.h"
#include "app/paths.h"
#include "platform/seams.h"

namespace store {
QString read(const QString &key, const QString &defaultValue)
{
    return platform::settingsStore().read(Application, Section, key, defaultValue);
}

void write(const QString &key, const QString &value)
{
    platform::settingsStore().write(Application, Section, key, value);
}

Batch::Batch() { platform::settingsStore().beginBatch(); }
Batch::~Batch() { platform::settingsStore().endBatch(); }
} // namespace store

namespace {

const QString True = QStringLiteral("TRUE");
const QString False = QStringLiteral("FALSE");

Settings *settingsRecord = new Settings;
MagazineArrays *magazineArrays = new MagazineArrays;

QString flagText(bool value) { return value ? True : False; }

QString rowKey(const char *word, int row) { return QLatin1String(word) + QString::number(row); }

// A stored number: its leading decimal number, rounded; too large is an overflow.
qint32 storedLong(const QString &key, const QString &defaultValue)
{
    const std::optional<qint32> value = roundToInt32(leadingNumber(store::read(key, defaultValue)));
    if (!value)
        throw Fault(fault::Overflow);
    return *value;
}

void loadFlags()
{
    Settings &s = settings();
    LoadBoolSetting(QStringLiteral("ToolTips"), s.ToolTips, True);
    LoadBoolSetting(QStringLiteral("SaveFullAuto"), s.SaveFullAuto, True);
    LoadBoolSetting(QStringLiteral("BeepOK"), s.BeepOK, True);
    LoadBoolSetting(QStringLiteral("OkToInterrupt"), s.OkToInterrupt, True);
    LoadBoolSetting(QStringLiteral("AutoRename"), s.AutoRename, False);
    LoadBoolSetting(QStringLiteral("SaveAsSeries"), s.SaveAsSeries, False);
    LoadBoolSetting(QStringLiteral("LimitApplied"), s.LimitApplied, True);
    LoadBoolSetting(QStringLiteral("CannotConnect"), s.CannotConnect, True);
    mainWindowLink().setMagFeedChecked(store::read(QStringLiteral("MagFeed"), True) == True);
    const bool delay = store::read(QStringLiteral("AddDelay"), False) == True;
    s.AddDelay.boolLet(delay);
    mainWindowLink().setCallInterval(delay ? 6000 : 300);
}

void loadNumbersAndDirs()
{
    Settings &s = settings();
    s.IncLimit.LongLet(storedLong(QStringLiteral("IncLimit"), QStringLiteral("15")));
    s.TimeOut.LongLet(storedLong(QStringLiteral("TimeOut"), QStringLiteral("30")));
    const std::optional<qint16> bite =
        roundToInt16(leadingNumber(store::read(QStringLiteral("BiteSize"), QStringLiteral("512"))));
    if (!bite)
        throw Fault(fault::Overflow);
    s.BiteSize.IntLet(*bite < 128 ? qint16(512) : *bite);
    s.TempDir.VarLet(store::read(QStringLiteral("TempDir"), fallbackDir()));
    s.SaveDir.VarLet(store::read(QStringLiteral("SaveDir"), fallbackDir()));
}

// Each row is taken out of the store as it is read; shut-down writes the rows back.
void loadMagazineRows()
{
    MagazineArrays &m = magazine();
    const store::Batch cleared; // on disk before the window shows, so no other copy loads them too
    for (int row = 0; row <= 9; ++row) {
        m.Round.strLet(row, store::read(rowKey("Round", row), QString()));
        if (!m.Round.strGet(row).isEmpty())
            m.MagRowCount = qint16(row + 1);
        m.Mask.strLet(row, store::read(rowKey("Mask", row), QString()));
        m.Group.strLet(row, store::read(rowKey("Group", row), QString()));
        m.Direct.boolLet(row, store::read(rowKey("Direct", row), True) == True);
        store::write(rowKey("Round", row), QString());
        store::write(rowKey("Mask", row), QString());
        store::write(rowKey("Group", row), QString());
        store::write(rowKey("Direct", row), True);
    }
}

} // namespace

Settings &settings() { return *settingsRecord; }
MagazineArrays &magazine() { return *magazineArrays; }

void resetSettings()
{
    *settingsRecord = Settings();
    *magazineArrays = MagazineArrays();
}

void LoadBoolSetting(const QString &key, clsStoreBool &holder, const QString &defaultValue)
{
    holder.boolLet(store::read(key, defaultValue) == True);
}

void SaveBoolSetting(const clsStoreBool &holder, const QString &key) { store::write(key, flagText(holder.boolGet())); }

void LookUpRegistry()
{
    try {
        loadFlags();
        loadNumbersAndDirs();
        loadMagazineRows();
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("LookUpRegistry Module"), QString(), f);
    }
}

void UpdateRegistry()
{
    try {
        const store::Batch written;
        const Settings &s = settings();
        SaveBoolSetting(s.SaveFullAuto, QStringLiteral("SaveFullAuto"));
        SaveBoolSetting(s.BeepOK, QStringLiteral("BeepOK"));
        SaveBoolSetting(s.OkToInterrupt, QStringLiteral("OkToInterrupt"));
        SaveBoolSetting(s.AutoRename, QStringLiteral("AutoRename"));
        SaveBoolSetting(s.SaveAsSeries, QStringLiteral("SaveAsSeries"));
        SaveBoolSetting(s.LimitApplied, QStringLiteral("LimitApplied"));
        SaveBoolSetting(s.ToolTips, QStringLiteral("ToolTips"));
        SaveBoolSetting(s.CannotConnect, QStringLiteral("CannotConnect"));
        SaveBoolSetting(s.AddDelay, QStringLiteral("AddDelay"));
        store::write(QStringLiteral("MagFeed"), flagText(mainWindowLink().magFeedChecked()));
        store::write(QStringLiteral("IncLimit"), QString::number(s.IncLimit.LongGet()));
        store::write(QStringLiteral("TimeOut"), QString::number(s.TimeOut.LongGet()));
        store::write(QStringLiteral("BiteSize"), QString::number(s.BiteSize.IntGet()));
        store::write(QStringLiteral("TempDir"), s.TempDir.VarGet().toString());
        store::write(QStringLiteral("SaveDir"), s.SaveDir.VarGet().toString());
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("UpdateRegistry Module"), QString(), f);
    }
}

QString NextSeriesNumber()
{
    const double next = leadingNumber(store::read(QStringLiteral("$eries#"), QStringLiteral("0"))) + 1;
    const std::optional<qint32> number = roundToInt32(next);
    if (!number)
        throw Fault(fault::Overflow);
    const QString id = QString::number(*number);
    settings().SeriesId.strLet(id);
    store::write(QStringLiteral("$eries#"), id);
    return id;
}

void SaveMagURLs()
{
    const MagazineArrays &m = magazine();
    if (m.Round.strGet(0).isEmpty())
        return;
    const store::Batch written;
    int next = 0;
    while (next <= 9 && !store::read(rowKey("Round", next), QString()).isEmpty())
        ++next;
    // The rows are written up to the first empty one: rows after a gap are never fired.
    for (int row = 0; row <= 9 && next < 10 && !m.Round.strGet(row).isEmpty(); ++row) {
        store::write(rowKey("Round", next), m.Round.strGet(row));
        store::write(rowKey("Mask", next), m.Mask.strGet(row));
        store::write(rowKey("Group", next), m.Group.strGet(row));
        store::write(rowKey("Direct", next), flagText(m.Direct.boolGet(row)));
        ++next;
    }
}
