#pragma once

#include <widgets/widgets_export.h>

#include <coordsys/CoordSystemTypes.h>
#include <coordsys/OperationChoice.h>

#include <QWidget>

#include <memory>

namespace nivora::cs {

/// Lets a user choose by which operation points go from one system into another: PROJ's own choice at each
/// place, or one of the operations that work here, with what they are worth and where they are in use. Its
/// choice is a value that a host keeps as text and gives to CoordTransform. Not for heights. Threads: the
/// widgets' own. Ownership: it keeps a share of the systems.
class NIVORA_CS_WIDGETS_EXPORT OperationPicker : public QWidget
{
    Q_OBJECT
public:
    /// Without a pair, so that PROJ chooses.
    explicit OperationPicker(QWidget *parent = nullptr);
    ~OperationPicker() override;

    /// The pair, source first; null for none. The choice stays when it fits the new pair, else it is PROJ's
    /// own. Some 20 ms.
    void setSystems(const CoordSystemPtr &from, const CoordSystemPtr &to);

    /// What is chosen now; OperationChoice().isDefault() for PROJ's own choice.
    OperationChoice choice() const;
    /// Shows a choice. One that the list does not hold, such as PROJ text or an area, becomes an entry of its
    /// own; one that fits nothing of the pair is refused: false, and what was chosen stays. Without a pair
    /// any is taken. Sends nothing.
    bool setChoice(const OperationChoice &choice);

Q_SIGNALS:
    /// The user has chosen, or a pair came that the choice does not fit.
    void choiceChanged(const nivora::cs::OperationChoice &choice);

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace nivora::cs
