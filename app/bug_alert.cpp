#include "app/bug_alert.h"

#include "app/settings.h"
#include "platform/seams.h"

Fault::Fault(const QString &description)
    : std::runtime_error(description.toStdString()), m_description(description)
{
}

void BugAlert(const QString &procedureText, const QString &extraText, const QString &description)
{
    if (settings().BeepOK.boolGet())
        platform::beeper().beep();
    const QString text = QStringLiteral("This unhandled error (bug) has occurred in ") + procedureText
        + QStringLiteral(":\r\n") + description + extraText
        + QStringLiteral("\r\nBy reporting this message, you will help to correct this issue in future releases.");
    platform::msgBox(text, QStringLiteral("Bug Alert!"), platform::Icon::Exclamation, platform::Buttons::Ok);
}
