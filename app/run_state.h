#pragma once
// The one program-wide record of the current run, shared by the main window
// and the sequencer, transfer, display and saving procedures.

#include <QByteArray>
#include <QPointer>
#include <QString>

class QAbstractButton;

struct RunState {
    bool RunActive = false;
    bool RequestCurrent = false;
    bool StopRequested = false;
    bool NextPressed = false;
    bool SavePressed = false;
    bool NoRefocus = false;
    QPointer<QAbstractButton> FocusControl; // gets the focus back at the end of a run
    bool IndicatorsOn = false;
    bool ReplyArrived = false;
    bool Repeating = false;
    bool RetryPending = false;
    bool SaveAvailable = false;
    bool ProjectorShown = false;
    QString RunMask;
    QString RunGroups;
    QString UrlFolder;
    QString StartBaseName;
    QString UrlExtension;
    qint32 StepOffset = 0;
    qint16 StepIncrement = 0;
    qint32 FailedCalls = 0;
    qint32 MinedCount = 0;
    qint32 SavedCount = 0;
    QString SeriesId;
    qint32 SeriesNumber = 0;
    QString CurrentFileName;
    QString CurrentURL;
    QString StatusVerb;
    QString ContentType;
    QString TempFileName;
    QString TempFilePath;
    QByteArray TempPicture; // what the reply handler wrote to the temporary file, kept in memory
    QString SavedStatus;
    qint16 StatusMaxLen = 0;
    QString PendingStatus;
    QString ProjectorTitle;
};

RunState &runState();
// Starts the record afresh, as at program start (before the main window loads).
void resetRunState();
