#include "magazine/frmMagazine.h"

#include "app/bug_alert.h"
#include "app/controls.h"
#include "app/mask_edit_texts.h"
#include "app/modMain.h"
#include "app/settings.h"
#include "app/window_keys.h"
#include "engine/ModFunct.h"
#include "platform/seams.h"
#include "ui/frmMaskEdit.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFocusEvent>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

namespace {

const QString Forward = QStringLiteral("+");
const QString Back = QStringLiteral("-");

// The dialog as laid out for a 1024x768 screen (scale 1.0), in pixels.
constexpr int FormWidth = 700;
constexpr int FormHeight = 448;
constexpr int FirstRowTop = 38;
constexpr int RowPitch = 31;
constexpr int RowHeight = 26;

QString rowText(int row) { return QString::number(row + 1); }

// The file name of an address without its extension; empty when it has none.
// Quiet: shows no box, reports no fault.
QString baseNameOf(const QString &url)
{
    if (url.isEmpty() || !url.contains(QLatin1Char('/')))
        return QString();
    const QString base = sBaseName(url);
    return base == ErrorText ? QString() : base;
}

// The default mask for an address; empty when it names no file.
QString derivedMask(const QString &url)
{
    if (baseNameOf(url).isEmpty())
        return QString();
    const QString mask = sDeriveMasks(url, false);
    return mask == ErrorText ? QString() : mask;
}

} // namespace

frmMagazine::frmMagazine(QWidget *parent) : QWidget(parent, Qt::Dialog)
{
    setObjectName(QStringLiteral("frmMagazine"));
    setWindowTitle(QStringLiteral("Tolmara Magazine"));
    createControls();
    layOutControls();
    connectHandlers();
}

void frmMagazine::createControls()
{
    framMagazine = named<QGroupBox>(this, "framMagazine");
    lblUrls = named<QLabel>(framMagazine, "lblUrls", QStringLiteral("URL"));
    lblMask = named<QLabel>(framMagazine, "lblMask", QStringLiteral("Mask"));
    lblEject = named<QLabel>(framMagazine, "lblEject", QStringLiteral("Eject"));
    lblEject->setAlignment(Qt::AlignCenter);
    for (int row = 0; row < Rows; ++row)
        createRow(row);
    txtStatus = named<QLineEdit>(this, "txtStatus");
    txtStatus->setReadOnly(true);
    txtStatus->setFocusPolicy(Qt::NoFocus);
    cmdFireOne = named<QPushButton>(this, "cmdFireOne", QStringLiteral("&Fire One"));
    cmdOK = named<QPushButton>(this, "cmdOK", QStringLiteral("&OK"));
    cmdCancel = named<QPushButton>(this, "cmdCancel", QStringLiteral("E&xit"));
}

void frmMagazine::createRow(int row)
{
    lblRow[row] = named<QLabel>(framMagazine, "lblRow", rowText(row));
    lblRow[row]->setAlignment(Qt::AlignCenter);
    txtURL[row] = named<QLineEdit>(framMagazine, "txtURL");
    txtMask[row] = named<QLineEdit>(framMagazine, "txtMask");
    cmdDirect[row] = named<QPushButton>(framMagazine, "cmdDirect", Forward);
    cmdEject[row] = named<QPushButton>(framMagazine, "cmdEject", QStringLiteral("<---"));
    for (QWidget *control : std::initializer_list<QWidget *>{lblRow[row], txtURL[row], txtMask[row],
                                                             cmdDirect[row], cmdEject[row]})
        control->setProperty("Index", row);
}

void frmMagazine::layOutControls()
{
    resize(FormWidth, FormHeight);
    framMagazine->setGeometry(10, 6, 680, 352);
    lblUrls->setGeometry(40, 16, 380, 20);
    lblMask->setGeometry(428, 16, 150, 20);
    lblEject->setGeometry(616, 16, 58, 20);
    for (int row = 0; row < Rows; ++row) {
        const int top = FirstRowTop + row * RowPitch;
        lblRow[row]->setGeometry(8, top, 28, RowHeight);
        txtURL[row]->setGeometry(40, top, 380, RowHeight);
        txtMask[row]->setGeometry(428, top, 150, RowHeight);
        cmdDirect[row]->setGeometry(584, top, 28, RowHeight);
        cmdEject[row]->setGeometry(618, top, 54, RowHeight);
    }
    txtStatus->setGeometry(10, 366, 680, 26);
    cmdFireOne->setGeometry(10, 402, 160, 36);
    cmdOK->setGeometry(360, 402, 160, 36);
    cmdCancel->setGeometry(530, 402, 160, 36);
}

void frmMagazine::connectHandlers()
{
    for (int row = 0; row < Rows; ++row) {
        connect(cmdDirect[row], &QPushButton::clicked, this, [this, row] { cmdDirect_Click(row); });
        connect(cmdEject[row], &QPushButton::clicked, this, [this, row] {
            iMoveUpOne(row);
            showStatus(QStringLiteral("Row %1 Ejected").arg(rowText(row)));
        });
        connect(txtURL[row], &QLineEdit::textEdited, this, [this, row] {
            showStatus(QStringLiteral("Enter Mask For Row %1 Or Press OK").arg(rowText(row)));
        });
        for (QWidget *watched : std::initializer_list<QWidget *>{lblRow[row], txtURL[row], txtMask[row]})
            watched->installEventFilter(this);
    }
    connect(cmdOK, &QPushButton::clicked, this, &frmMagazine::cmdOK_Click);
    connect(cmdFireOne, &QPushButton::clicked, this, &frmMagazine::cmdFireOne_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &QWidget::close);
    pressOnKeys(this, cmdOK, cmdCancel);
}

void frmMagazine::Form_Load()
{
    try {
        const ScreenProfile &profile = screenProfile();
        ScaleForm(this, profile.ScaleFactor, true);
        setFixedSize(size());
        SetFormFontSize(this, profile.FontSizeMedium);
        if (settings().ToolTips.boolGet())
            SetToolTips();
        else
            ClearToolTips(this);
        const MagazineArrays &m = magazine();
        for (int row = 0; row < Rows; ++row) {
            Row values;
            values.url = m.Round.strGet(row);
            if (!values.url.isEmpty()) {
                values.mask = m.Mask.strGet(row);
                values.group = m.Group.strGet(row);
                values.groupMask = values.mask;
                values.forward = m.Direct.boolGet(row);
            }
            writeRow(row, values);
        }
        showLoadedStatus();
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("frmMagazine.form_Load"), QString(), f);
    }
}

void frmMagazine::SetToolTips()
{
    for (int row = 0; row < Rows; ++row) {
        txtURL[row]->setToolTip(QStringLiteral("Enter URL Here"));
        txtMask[row]->setToolTip(QStringLiteral("Enter Mask Here (>> For Mask Edit)"));
        cmdDirect[row]->setToolTip(QStringLiteral("Click To Toggle Download Direction"));
        cmdEject[row]->setToolTip(QStringLiteral("Eject This URL"));
        lblRow[row]->setToolTip(QStringLiteral("Double Click To Copy From Clipboard"));
    }
    cmdFireOne->setToolTip(QStringLiteral("Sends First Entry To Address Box"));
    cmdOK->setToolTip(QStringLiteral("Accept These Entries"));
    cmdCancel->setToolTip(QStringLiteral("Cancel Magazine Load"));
}

frmMagazine::Row frmMagazine::readRow(int row) const
{
    return {txtURL[row]->text(), txtMask[row]->text(), m_groups[row], m_groupMasks[row],
            cmdDirect[row]->text() == Forward};
}

void frmMagazine::writeRow(int row, const Row &values)
{
    txtURL[row]->setText(values.url);
    txtURL[row]->setCursorPosition(0);
    txtMask[row]->setText(values.mask);
    m_groups[row] = values.group;
    m_groupMasks[row] = values.groupMask;
    cmdDirect[row]->setText(values.forward ? Forward : Back);
}

int frmMagazine::filledRows() const
{
    return int(std::count_if(txtURL.cbegin(), txtURL.cend(),
                             [](const QLineEdit *box) { return !box->text().trimmed().isEmpty(); }));
}

void frmMagazine::showStatus(const QString &text)
{
    txtStatus->setText(text);
    txtStatus->setCursorPosition(0);
}

void frmMagazine::showLoadedStatus()
{
    const int filled = filledRows();
    if (filled == 0)
        showStatus(QStringLiteral("Type A JPEG URL, Or Click A Row Number To Paste One"));
    else
        showStatus(QStringLiteral("%1 Shot%2 Loaded - Add, Eject Or Press OK")
                       .arg(filled)
                       .arg(filled == 1 ? QString() : QStringLiteral("s")));
}

// Row actions ----------------------------------------------------------------

void frmMagazine::cmdDirect_Click(int row)
{
    const bool forward = cmdDirect[row]->text() != Forward;
    cmdDirect[row]->setText(forward ? Forward : Back);
    showStatus(QStringLiteral("Row %1 Downloads %2").arg(rowText(row),
                                                         forward ? QStringLiteral("Forward") : QStringLiteral("Backward")));
}

// Moves the rows below row up by one; the last row becomes empty. Returns the
// number of filled rows.
int frmMagazine::iMoveUpOne(int row)
{
    try {
        for (int i = row; i < Rows - 1; ++i)
            writeRow(i, readRow(i + 1));
        writeRow(Rows - 1, Row());
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("iMoveUpOne"), QString(), f);
    }
    return filledRows();
}

// Moves the rows from row on down by one, leaving row empty; the last row is
// lost. Returns the number of filled rows.
int frmMagazine::iMoveDownOne(int row)
{
    for (int i = Rows - 1; i > row; --i)
        writeRow(i, readRow(i - 1));
    writeRow(row, Row());
    return filledRows();
}

// A click on a row number puts the clipboard's text, even none, into a new
// row there.
void frmMagazine::lblRow_Click(int row)
{
    const QString text = platform::clipboard().text().trimmed();
    const bool lastFilled = !txtURL[Rows - 1]->text().trimmed().isEmpty();
    iMoveDownOne(row);
    txtURL[row]->setText(text);
    txtURL[row]->setCursorPosition(0);
    QString status = (text.isEmpty() ? QStringLiteral("Empty Row %1 Put In - The Clipboard Holds No Text")
                                     : QStringLiteral("Row %1 Pasted From Clipboard"))
                         .arg(rowText(row));
    if (lastFilled && row < Rows - 1)
        status += QStringLiteral(" - Row 10 Was Pushed Out");
    showStatus(status);
}

// A row's mask box got the focus: a row with an address and no mask gets the
// default mask, selected for editing.
void frmMagazine::iTxtMaskGotFocusRoutine(int row)
{
    try {
        QLineEdit *box = txtMask[row];
        box->setPlaceholderText(QStringLiteral("Enter Mask"));
        const QString url = txtURL[row]->text().trimmed();
        if (url.isEmpty()) {
            showStatus(QStringLiteral("Enter A URL In Row %1 First").arg(rowText(row)));
            return;
        }
        if (box->text().trimmed().isEmpty())
            box->setText(derivedMask(url));
        // Selected now for the keyboard, and again after a click has placed the caret.
        box->selectAll();
        QTimer::singleShot(0, box, [box] { box->selectAll(); });
        showStatus(QStringLiteral("Edit Mask Or Double Click For Advanced Edit"));
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("iTxtMaskGotFocusRoutine"), QString(), f);
    }
}

// The advanced mask editor for a row that has an address; the mask it
// accepts comes back into the row through bMagMaskEditCallBack.
void frmMagazine::CallMaskEdit(int row)
{
    try {
        const QString url = txtURL[row]->text().trimmed();
        const QString base = baseNameOf(url);
        if (base.isEmpty()) {
            showStatus(QStringLiteral("Row %1 Has No File Name To Mask").arg(rowText(row)));
            return;
        }
        syncRows();
        // A mask of another length than the name starts the editor from the default one.
        const QString mask = txtMask[row]->text().size() == base.size() ? txtMask[row]->text() : derivedMask(url);
        MaskEditTexts &texts = maskEditTexts();
        texts.sMaskBaseName = base;
        texts.sMaskDirections = sMaskToDirections(mask);
        texts.sMaskGroups = mask == txtMask[row]->text() ? m_groups[row] : sMaskToGroups(mask);
        texts.bMaskEditFromMagazine = true;
        QPointer<frmMagazine> self(this);
        if (frmMaskEdit::open(this, [self, row] {
                if (self)
                    self->bMagMaskEditCallBack(row);
            }))
            showStatus(QStringLiteral("Mark The Counters Of Row %1, Then Press SET").arg(rowText(row)));
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("CallMaskEdit"), QString(), f);
    }
}

void frmMagazine::bMagMaskEditCallBack(int row)
{
    const MaskEditTexts &texts = maskEditTexts();
    txtMask[row]->setText(texts.sMaskDirections);
    m_groups[row] = texts.sMaskGroups;
    m_groupMasks[row] = texts.sMaskDirections;
    showStatus(QStringLiteral("Row %1 Mask Set - Press OK To Load The Magazine").arg(rowText(row)));
}

bool frmMagazine::eventFilter(QObject *watched, QEvent *event)
{
    const int row = watched->property("Index").toInt();
    const QEvent::Type type = event->type();
    if (watched == lblRow[row]) {
        // A double-click pastes once, as a single click does.
        if (type != QEvent::MouseButtonRelease && type != QEvent::MouseButtonDblClick)
            return QWidget::eventFilter(watched, event);
        if (row != m_pastedRow || !m_pastedAt.isValid()
            || m_pastedAt.elapsed() > QApplication::doubleClickInterval()) {
            lblRow_Click(row);
            m_pastedRow = row;
            m_pastedAt.start();
        }
        return true;
    } else if (watched == txtURL[row] && type == QEvent::FocusIn) {
        // The focus that comes with the window keeps the opening status.
        if (static_cast<QFocusEvent *>(event)->reason() != Qt::ActiveWindowFocusReason)
            showStatus(QStringLiteral("Enter URL For Row %1").arg(rowText(row)));
    } else if (watched == txtMask[row]) {
        if (type == QEvent::FocusIn)
            iTxtMaskGotFocusRoutine(row);
        else if (type == QEvent::FocusOut)
            txtMask[row]->setPlaceholderText(QString());
        else if (type == QEvent::MouseButtonDblClick && !txtURL[row]->text().trimmed().isEmpty()) {
            CallMaskEdit(row);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

// Accepting ------------------------------------------------------------------

// Every row with an address gets a mask (the default one when none was
// typed), and every mask the group string that belongs to it: a typed mask its
// own, an edited one the editor's.
void frmMagazine::syncRows()
{
    for (int row = 0; row < Rows; ++row) {
        const QString url = txtURL[row]->text().trimmed();
        QString mask = txtMask[row]->text().trimmed();
        if (!url.isEmpty() && mask.isEmpty())
            mask = derivedMask(url);
        txtURL[row]->setText(url);
        txtMask[row]->setText(mask);
        const bool groupFits = m_groups[row].size() == mask.size() && bGroupCharsOK(m_groups[row]);
        if (mask != m_groupMasks[row] || !groupFits) {
            m_groups[row] = mask.isEmpty() ? QString() : sMaskToGroups(mask);
            m_groupMasks[row] = mask;
        }
    }
}

// Checks a row that has an address; when it is bad, the box to fix gets the
// focus and the result is false.
bool frmMagazine::checkRow(int row)
{
    const QString url = txtURL[row]->text();
    if (!sIsValidURLb(url)) {
        txtURL[row]->setFocus();
        showStatus(QStringLiteral("Fix The URL In Row %1, Or Eject It").arg(rowText(row)));
        return false;
    }
    const QString name = sBaseName(url);
    if (name == ErrorText)
        throw Fault(fault::InvalidCall);
    if (!bIsValidMask(name, txtMask[row]->text(), m_groups[row])) {
        txtMask[row]->setFocus();
        showStatus(QStringLiteral("Fix The Mask In Row %1 - Double Click For Advanced Edit").arg(rowText(row)));
        return false;
    }
    return true;
}

// Stores the rows into the magazine from the top. A bad row stops it there:
// the rows above it are stored, the count and the main window's button stay
// as they were, and the dialog stays open on the box to fix.
void frmMagazine::cmdOK_Click()
{
    try {
        syncRows();
        MagazineArrays &m = magazine();
        qint16 count = 0;
        for (int row = 0; row < Rows; ++row) {
            const Row values = readRow(row);
            if (values.url.isEmpty()) {
                m.Round.strLet(row, QString());
                m.Mask.strLet(row, QString());
                continue;
            }
            ++count;
            if (!checkRow(row))
                return;
            m.Round.strLet(row, values.url);
            m.Mask.strLet(row, values.mask);
            m.Group.strLet(row, values.group);
            m.Direct.boolLet(row, values.forward);
        }
        m.MagRowCount = count;
        emit accepted();
        close();
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("cmdOK_Click"), QString(), f);
    }
}

// Sends row 1 to the main window, starts it (which stops a running series
// instead), and accepts the rows.
void frmMagazine::cmdFireOne_Click()
{
    try {
        syncRows();
        if (txtURL[0]->text().isEmpty()) {
            platform::msgBox(QStringLiteral("Row 1 is empty!"), QStringLiteral("OOPS!"), platform::Icon::Information);
            return;
        }
        const Row first = readRow(0);
        emit fired(first.url, first.mask, first.group, first.forward);
        cmdOK->click();
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("cmdFireOne_Click"), QString(), f);
    }
}

void frmMagazine::closeEvent(QCloseEvent *event)
{
    emit closed();
    event->accept();
}
