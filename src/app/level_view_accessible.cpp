#include "app/level_view_accessible.h"

#include <QAccessibleWidget>
#include <algorithm>
#include <vector>

#include "app/level_view.h"

namespace tintoral {
namespace {

class BarAccessible : public QAccessibleInterface, public QAccessibleValueInterface {
  public:
    BarAccessible(const LevelView& view, int row) : view_(view), row_(row) {}

    bool isValid() const override { return row_ < view_.inkCount(); }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(const_cast<LevelView*>(&view_));
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }

    QAccessible::Role role() const override { return QAccessible::ProgressBar; }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.readOnly = true;
        state.invisible = !view_.isVisible();
        return state;
    }
    QRect rect() const override {
        const QRect row = view_.rectOfRow(row_);
        return {view_.mapToGlobal(row.topLeft()), row.size()};
    }
    QString text(QAccessible::Text kind) const override {
        if (!isValid()) return {};
        if (kind == QAccessible::Name) return QString::fromStdString(view_.row(row_).name);
        return kind == QAccessible::Value ? view_.levelInWords(row_) : QString();
    }
    void setText(QAccessible::Text, const QString&) override {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        const bool hasNumber = isValid() && view_.hasReading() && view_.row(row_).level >= 0;
        if (type != QAccessible::ValueInterface || !hasNumber) return nullptr;
        return static_cast<QAccessibleValueInterface*>(this);
    }
    QVariant currentValue() const override { return isValid() ? view_.row(row_).level : 0; }
    void setCurrentValue(const QVariant&) override {}
    QVariant minimumValue() const override { return 0; }
    QVariant maximumValue() const override { return 100; }
    QVariant minimumStepSize() const override { return 1; }

  private:
    const LevelView& view_;
    int row_;
};

class LevelViewAccessible : public QAccessibleWidget {
  public:
    explicit LevelViewAccessible(LevelView& view)
        : QAccessibleWidget(&view, QAccessible::Grouping), view_(view) {}
    LevelViewAccessible(const LevelViewAccessible&) = delete;
    LevelViewAccessible& operator=(const LevelViewAccessible&) = delete;
    ~LevelViewAccessible() override {
        for (const QAccessible::Id bar : bars_) QAccessible::deleteAccessibleInterface(bar);
    }

    int childCount() const override { return view_.inkCount(); }
    QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= childCount()) return nullptr;
        while (static_cast<int>(bars_.size()) <= index) {
            auto* bar = new BarAccessible(view_, static_cast<int>(bars_.size()));
            bars_.push_back(QAccessible::registerAccessibleInterface(bar));  // which owns it
        }
        return QAccessible::accessibleInterface(bars_[static_cast<std::size_t>(index)]);
    }
    int indexOfChild(const QAccessibleInterface* bar) const override {
        for (int i = 0; i < childCount(); ++i) {
            if (child(i) == bar) return i;
        }
        return -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        for (int i = 0; i < childCount(); ++i) {
            if (child(i)->rect().contains(x, y)) return child(i);
        }
        return nullptr;
    }

  private:
    const LevelView& view_;
    mutable std::vector<QAccessible::Id> bars_;
};

}  // namespace

QAccessibleInterface* levelViewAccessible(const QString&, QObject* object) {
    auto* view = qobject_cast<LevelView*>(object);
    return view ? new LevelViewAccessible(*view) : nullptr;
}

}  // namespace tintoral
