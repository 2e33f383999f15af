#include <widgets/texts/WidgetTexts_p.h>
#include <widgets/user/SaveSystem_p.h>

#include <coordsys/CoordSystem.h>
#include <coordsys/UserCoordSystem.h>

#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include <exception>

namespace nivora::cs {
namespace {

/// Asks for the two names.
class SaveDialog : public QDialog
{
public:
    SaveDialog(QWidget *parent, const UserCoordSystem &store, const QString &name)
        : QDialog(parent)
        , m_name(new QLineEdit(name))
        , m_branch(new QComboBox)
    {
        setWindowTitle(WidgetTexts::tr("Сохранить как мою систему"));
        m_branch->setEditable(true);
        for (const UserCoordSystem::CsDataType &branch : store.data())
            m_branch->addItem(branch.name);
        if (m_branch->count() == 0)
            m_branch->addItem(WidgetTexts::tr("Мои системы"));
        auto *buttons = new QDialogButtonBox(this);
        QPushButton *save = buttons->addButton(WidgetTexts::tr("Сохранить"), QDialogButtonBox::AcceptRole);
        buttons->addButton(WidgetTexts::tr("Отмена"), QDialogButtonBox::RejectRole);
        auto *form = new QFormLayout(this);
        form->addRow(WidgetTexts::tr("&Название:"), m_name);
        form->addRow(WidgetTexts::tr("&Раздел:"), m_branch);
        form->addRow(buttons);
        m_name->setMinimumWidth(m_name->fontMetrics().averageCharWidth() * 50);
        connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
        connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
        const auto check = [=] { save->setDisabled(systemName().isEmpty() || branchName().isEmpty()); };
        connect(m_name, &QLineEdit::textChanged, this, check);
        connect(m_branch, &QComboBox::editTextChanged, this, check);
        check();
        setTabOrder(m_name, m_branch);
        setTabOrder(m_branch, buttons);
        m_name->selectAll();
        m_name->setFocus(); // the buttons are older
    }

    QString systemName() const { return m_name->text().trimmed(); }
    QString branchName() const { return m_branch->currentText().trimmed(); }

private:
    QLineEdit *m_name;
    QComboBox *m_branch;
};

/// An affine transformation stands in the CoordSys text alone.
CoordSystemTypes::SourceData sourceOf(const CoordSystem &cs)
{
    const CoordSystemTypes::SourceData source = cs.sourceParameters();
    const bool isWhole = !source.string.isEmpty() && !cs.affineTransform();
    return isWhole ? source : CoordSystemTypes::SourceData{CoordSystemTypes::Prj, cs.prjStr()};
}

} // namespace

bool saveAsOwnSystem(QWidget *parent, UserCoordSystem &store, const CoordSystem &cs)
{
    SaveDialog dialog(parent, store, cs.description());
    if (dialog.exec() != QDialog::Accepted)
        return false;
    try {
        return store.update([&](UserCoordSystem &fresh) { // other windows may have saved since
            fresh.setCoordSystem(dialog.branchName(), sourceOf(cs), dialog.systemName());
            return true;
        });
    } catch (const std::exception &e) {
        QMessageBox::warning(parent, dialog.windowTitle(), QString::fromUtf8(e.what()));
        return false;
    }
}

} // namespace nivora::cs
