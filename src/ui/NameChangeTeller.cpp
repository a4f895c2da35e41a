#include "NameChangeTeller.h"

#include <QAccessible>
#include <QTimerEvent>
#include <QWidget>

#include <algorithm>
#include <utility>

namespace tambrel {

NameChangeTeller::NameChangeTeller(QObject* parent, Tell tell) : QObject(parent), tell_(std::move(tell)) {}

void NameChangeTeller::noteChange(QWidget& view) {
    if (std::ranges::find(due_, &view) == due_.end())
        due_.push_back(&view);
    if (!pause_.isActive())
        tellNext();
}

void NameChangeTeller::timerEvent(QTimerEvent* event) {
    if (event->timerId() != pause_.timerId())
        return QObject::timerEvent(event);
    if (due_.empty())
        pause_.stop();
    else
        tellNext();
}

void NameChangeTeller::tellNext() {
    constexpr int second = 1000;
    QWidget& view = *due_.front();
    due_.erase(due_.begin());
    if (tell_(view))
        return pause_.start(second, this);
    due_.clear();
    pause_.stop();
}

bool NameChangeTeller::tellNameChanged(QWidget& view) {
    if (!QAccessible::isActive())
        return false;
    QAccessibleEvent change(&view, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&change);
    return true;
}

} // namespace tambrel
