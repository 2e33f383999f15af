#pragma once

#include <coordsys/Calibration.h>

#include <QTableWidget>

namespace nivora::cs {

/// The pairs as a table to type in: switch, name, four coordinates, weight, heights where they are asked for,
/// and what is left at the point.
class PairsTable : public QTableWidget
{
    Q_OBJECT
public:
    explicit PairsTable(QWidget *parent = nullptr);

    /// Whether the columns are degrees as people write them.
    void setAngles(bool known) { m_knownAreAngles = known; }
    /// Whether heights are shown, of the ellipsoid in metres; they are kept when not.
    void showHeights(bool shown);
    void setPairs(const QVector<CalibrationPair> &pairs);
    void append(const CalibrationPair &pair);
    /// The rows that hold four numbers; \p rows, when not null, gets their positions.
    QVector<CalibrationPair> pairs(QVector<int> *rows = nullptr) const;
    int paste(const QString &text);
    void removeSelected();
    /// Of the pairs in the order of pairs(); empty takes them away.
    void showResiduals(const QVector<CalibrationResidual> &residuals);

Q_SIGNALS:
    void pairsChanged();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool readRow(int row, CalibrationPair &pair) const;

    bool m_knownAreAngles = false;
};

} // namespace nivora::cs
