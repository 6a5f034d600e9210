#pragma once
// The one reporter of unexpected faults, and the fault that procedures raise.

#include <QString>
#include <stdexcept>

// Descriptions of the run-time faults the program can meet.
namespace fault {
inline const QString SubscriptOutOfRange = QStringLiteral("Subscript out of range");
inline const QString Overflow = QStringLiteral("Overflow");
inline const QString InvalidCall = QStringLiteral("Invalid procedure call or argument");
} // namespace fault

// A run-time fault raised inside a procedure; its handler reports it with BugAlert.
class Fault : public std::runtime_error {
public:
    explicit Fault(const QString &description);
    QString description() const { return m_description; }

private:
    QString m_description;
};

// Beeps when BeepOK is on, then shows the "Bug Alert!" box naming the procedure
// and the fault. extraText is appended to the description.
void BugAlert(const QString &procedureText, const QString &extraText, const QString &description);
inline void BugAlert(const QString &procedureText, const QString &extraText, const Fault &fault)
{
    BugAlert(procedureText, extraText, fault.description());
}
