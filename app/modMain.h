#pragma once
// Start-up: the screen profile, the temporary file name, the default
// directories, the window scaling routines, the exit prompt and the dial-up hang-up.

#include <QByteArray>
#include <QList>
#include <QString>

class QWidget;

struct ScreenProfile {
    QString ResolutionName;
    float ScaleFactor = 1.0f;
    qint16 FontSizeSmall = 8;
    qint16 FontSizeMedium = 10;
    qint16 FontSizeLarge = 12;
    qint16 FontSizeTitle = 14;
    qint16 PathDisplayLength = 57;
    qint16 ProjectorHeight = 9500; // twips
    qint16 ProjectorWidth = 10000; // twips
    float SecondScale = 0.9f;
};

// Program-wide start-up state.
struct StartupState {
    ScreenProfile profile;
    QString sTempFileName;
    qint32 LastRasResult = 0;
};

StartupState &startup();
inline ScreenProfile &screenProfile() { return startup().profile; }
void resetStartup();

// Twips, the unit of the window layouts, to pixels and back.
constexpr int TwipsPerPixel = 15;

// Checks the screen, picks the profile, names the temporary file, makes the
// default directories and opens the main window. False when the program must
// end at once (an unsupported screen).
bool Main();

bool IsScreenResolution(int width, int height);
void SetScreenProfile(const QString &resolutionName, float scaleFactor, qint16 fontSizeSmall,
                      qint16 fontSizeMedium, qint16 fontSizeLarge, qint16 fontSizeTitle,
                      qint16 pathDisplayLength, qint16 projectorHeight, qint16 projectorWidth,
                      float secondScale);
QString MakeTempName();
bool DefaultDirsExist();
void CreateDefaultDirs();

// The controls of a window: its named descendant widgets, without Qt's own inner parts
// and without the dialogs opened over it (windows of their own) and their controls.
QList<QWidget *> formControls(QWidget *form);
void ScaleForm(QWidget *form, double factor, bool scaleFormItself);
// Top, left, height and width in twips, multiplied by the profile's ScaleFactor.
void ScaleControl(QWidget *control, int top, int left, int height, int width);
void SetFormFontSize(QWidget *form, int size);
void SetArrayFontSize(const QList<QWidget *> &controlArray, int size);
void ClearToolTips(QWidget *form);

// Asks whether a changed configuration is to be saved; 1 when the user cancels.
qint16 UpdateConfig();

void HangUpRas();
QString ByteToString(const QByteArray &bytes);
