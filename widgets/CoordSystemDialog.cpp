#include <widgets/CoordSystemDialog.h>

#include <coordsys/CoordSysFactory.h>

#include <QDialogButtonBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace nivora::cs {

CoordSystemDialog::CoordSystemDialog(QWidget *parent)
    : CoordSystemDialog(CoordSysFactory::defaultCoordSysFactory(), parent)
{}

CoordSystemDialog::CoordSystemDialog(std::shared_ptr<CoordSysFactory> factory, QWidget *parent)
    : QDialog(parent)
    , m_picker(new CoordSystemPicker(std::move(factory), this))
{
    setWindowTitle(QObject::tr("Выбор системы координат"));
    auto *buttons = new QDialogButtonBox(this);
    m_ok = buttons->addButton(QObject::tr("Выбрать"), QDialogButtonBox::AcceptRole);
    m_ok->setDefault(true);
    buttons->addButton(QObject::tr("Отмена"), QDialogButtonBox::RejectRole);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_picker);
    layout->addWidget(buttons);
    resize(1060, 640);

    connect(buttons, &QDialogButtonBox::accepted, this, &CoordSystemDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CoordSystemDialog::reject);
    connect(m_picker, &CoordSystemPicker::activated, this, &CoordSystemDialog::accept);
    const auto update = [this] { m_ok->setEnabled(m_picker->canChoose()); };
    connect(m_picker, &CoordSystemPicker::choiceChanged, this, update);
    update();
}

void CoordSystemDialog::accept()
{
    m_accepted = m_picker->coordSystem();
    if (!m_accepted)
        return; // the details say why
    m_picker->rememberChoice();
    QDialog::accept();
}

CoordSystemPtr CoordSystemDialog::choose(QWidget *parent, const CoordSystemPtr &current, const QRectF &view)
{
    CoordSystemDialog dialog(parent);
    dialog.picker()->setCoordSystem(current);
    dialog.picker()->setView(view);
    return dialog.exec() == Accepted ? dialog.coordSystem() : nullptr;
}

} // namespace nivora::cs
