// A field for a month, counted from January 2006 and shown as "03/2026": stepped with the arrows or
// typed.
#pragma once

#include <QtWidgets/QSpinBox>

namespace tintoral {

class MonthPicker : public QSpinBox {
    Q_OBJECT

  public:
    explicit MonthPicker(QWidget* parent = nullptr);

  protected:
    QString textFromValue(int monthIndex) const override;
    int valueFromText(const QString& text) const override;
    QValidator::State validate(QString& text, int& position) const override;
};

}  // namespace tintoral
