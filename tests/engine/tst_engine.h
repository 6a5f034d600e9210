#pragma once
// The engine's test classes, one per family of operations.

#include "support/fakes.h"

#include <QObject>
#include <QString>

#include <functional>

using namespace Qt::StringLiterals;

// The "Bug Alert!" text for a fault in procedure.
inline QString bugAlertText(const QString &procedure, const QString &description)
{
    return u"This unhandled error (bug) has occurred in "_s + procedure + u":\r\n"_s + description
        + u"\r\nBy reporting this message, you will help to correct this issue in future releases."_s;
}

// The titles of the boxes shown so far.
inline QStringList titles(const fakes::MessageBoxes &boxes)
{
    QStringList all;
    for (const platform::MessageBoxRequest &box : boxes.shown())
        all.append(box.title);
    return all;
}

class UrlTest : public QObject {
    Q_OBJECT
private slots:
    void addresses_data();
    void addresses();
    void split_data();
    void split();
    void names_data();
    void names();
    void tailLen_data();
    void tailLen();
    void compress_data();
    void compress();
    void paths_data();
    void paths();
    void timeStamp_data();
    void timeStamp();
    void smallHelpers();
};

class MaskTest : public QObject {
    Q_OBJECT
private slots:
    void derive_data();
    void derive();
    void groups_data();
    void groups();
    void validate_data();
    void validate();
};

// Exact texts of every box the engine shows.
class MessageTest : public QObject {
    Q_OBJECT
private slots:
    void messages_data();
    void messages();
    void bugAlerts_data();
    void bugAlerts();
};

class StepTest : public QObject {
    Q_OBJECT
private slots:
    void stepGroups_data();
    void stepGroups();
    void stepNumber_data();
    void stepNumber();
    void stepLetter_data();
    void stepLetter();
    void faultsGoToCaller_data();
    void faultsGoToCaller();
};

class PropertyTest : public QObject {
    Q_OBJECT
private slots:
    void steppingKeepsFixedCharacters();
    void digitCounterStepsBack();
    void groupsFollowMask();
    void derivedMasksAreValid();
};
