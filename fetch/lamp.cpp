#include "fetch/lamp.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>

Lamp::Lamp(QWidget *parent) : QWidget(parent), m_fill(outColor()) {}

QColor Lamp::outColor() { return QApplication::palette().color(QPalette::Button); }

void Lamp::setFillColor(const QColor &color)
{
    if (color == m_fill)
        return;
    m_fill = color;
    update();
}

void Lamp::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::Dark), 1));
    painter.setBrush(m_fill);
    const int side = qMin(width(), height()) - 2;
    painter.drawEllipse(QRect((width() - side) / 2, (height() - side) / 2, side, side));
}
