#include "ui/config_controls.h"

#include "app/numbers.h"

#include <QLineEdit>
#include <QPainter>
#include <QStyle>
#include <QToolButton>

#include <cmath>

UpDown::UpDown(QLineEdit *buddy, int increment, QWidget *parent)
    : QWidget(parent), m_buddy(buddy), m_increment(increment), m_up(new QToolButton(this)),
      m_down(new QToolButton(this))
{
    m_up->setArrowType(Qt::UpArrow);
    m_down->setArrowType(Qt::DownArrow);
    for (QToolButton *arrow : {m_up, m_down}) {
        arrow->setAutoRepeat(true);
        arrow->setFocusPolicy(Qt::NoFocus);
    }
    connect(m_up, &QToolButton::clicked, this, [this] { stepBy(1); });
    connect(m_down, &QToolButton::clicked, this, [this] { stepBy(-1); });
}

void UpDown::resizeEvent(QResizeEvent *)
{
    const int half = height() / 2;
    m_up->setGeometry(0, 0, width(), half);
    m_down->setGeometry(0, half, width(), height() - half);
}

void UpDown::stepBy(int steps)
{
    const double now = leadingNumber(m_buddy->text());
    const int from = std::isfinite(now) ? int(std::floor(qBound(double(Min), now, double(Max)))) : Min;
    m_buddy->setText(QString::number(qBound(Min, from + steps * m_increment, Max)));
}

PathLabel::PathLabel(QWidget *parent) : QLabel(parent)
{
    setFrameStyle(QFrame::Panel | QFrame::Sunken);
    setTextFormat(Qt::PlainText);
    setIndent(4);
}

void PathLabel::paintEvent(QPaintEvent *event)
{
    const QRect area = contentsRect().adjusted(4, 0, -4, 0);
    if (fontMetrics().horizontalAdvance(text()) <= area.width()) {
        QLabel::paintEvent(event);
        return;
    }
    QFrame::paintEvent(event);
    QPainter painter(this);
    painter.drawText(area, Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(text(), Qt::ElideMiddle, area.width()));
}
