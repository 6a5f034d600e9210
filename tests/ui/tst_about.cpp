#include "app/modMain.h"
#include "support/fakes.h"
#include "support/test_main.h"
#include "support/window_fixture.h"
#include "ui/frmAbout.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>

class AboutTest : public QObject {
    Q_OBJECT
private slots:
    void openAndClose_data();
    void openAndClose();
};

namespace {

// Right-clicks target; the context menu that comes up, if any, is answered by
// choosing its entry named entry. False when no menu came up.
bool rightClick(QWidget *target, const QString &entry)
{
    bool menuShown = false;
    QTimer::singleShot(100, target, [&menuShown, entry] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!menu)
            return;
        menuShown = true;
        for (QAction *action : menu->actions())
            if (action->text() == entry)
                menu->setActiveAction(action);
        QTest::keyClick(menu, Qt::Key_Return);
    });
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), target->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(target, &event);
    QTest::qWait(200);
    return menuShown;
}


} // namespace

// How the box is opened, on which screen, and how it is closed.
void AboutTest::openAndClose_data()
{
    QTest::addColumn<QString>("open");
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<QString>("close");
    QTest::newRow("F1, key") << "F1" << QSize(1024, 768) << "key";
    QTest::newRow("menu of a button, click on the text") << "menu" << QSize(1280, 1024) << "click credits";
    QTest::newRow("F1, Esc") << "F1" << QSize(800, 600) << "Esc";
    QTest::newRow("F1, click on the box") << "F1" << QSize(1024, 768) << "click box";
}

void AboutTest::openAndClose()
{
    QFETCH(QString, open);
    QFETCH(QSize, screen);
    QFETCH(QString, close);
    fakes::TestSeams seams;
    seams.screen.size = screen;
    QVERIFY(Main());
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    // The right button on the picture is a picture command: no menu comes up there.
    QVERIFY(!rightClick(w->pictMain, QStringLiteral("About Tolmara")));
    if (open == QLatin1String("F1"))
        QTest::keyClick(w, Qt::Key_F1);
    else
        QVERIFY(rightClick(w->cmdConfig, QStringLiteral("About Tolmara")));
    QPointer<frmAbout> about = w->findChild<frmAbout *>();
    QVERIFY(about);
    QTRY_VERIFY(about->isVisible());
    QCOMPARE(about->windowTitle(), QStringLiteral("About Tolmara"));
    QVERIFY(QRegularExpression(QStringLiteral("^Tolmara \\d+\\.\\d+")).match(about->lblTitle->text()).hasMatch());
    QCOMPARE(about->lblCredits->font().pointSize(), screenProfile().FontSizeMedium);
    QCOMPARE(about->lblTitle->font().pointSize(), screenProfile().FontSizeTitle);
    if (close == QLatin1String("key"))
        QTest::keyClick(about, Qt::Key_A);
    else if (close == QLatin1String("Esc"))
        QTest::keyClick(about, Qt::Key_Escape);
    else
        QTest::mouseClick(close == QLatin1String("click box") ? static_cast<QWidget *>(about)
                                                               : about->lblCredits,
                          Qt::LeftButton);
    QTRY_VERIFY(about.isNull());
    QVERIFY(w->isVisible());
    w->Unload();
}

TOLMARA_REGISTER_TEST(AboutTest)
#include "tst_about.moc"
