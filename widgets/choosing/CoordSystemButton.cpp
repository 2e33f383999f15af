#include <widgets/CoordSystemButton.h>

#include <widgets/CoordSystemDialog.h>
#include <widgets/texts/WidgetTexts_p.h>

#include <coordsys/CoordSysFactory.h>
#include <coordsys/CoordSystem.h>

namespace nivora::cs {

class NIVORA_CS_WIDGETS_NO_EXPORT CoordSystemButton::Private
{
public:
    std::shared_ptr<CoordSysFactory> factory; ///< null: the default one when it is clicked
    CoordSystemPtr system;
    CoordSystemPicker::Kinds kinds = CoordSystemPicker::AnyKind;
    bool isNoSystemAllowed = false;
    QRectF view;
};

CoordSystemButton::CoordSystemButton(QWidget *parent)
    : CoordSystemButton(nullptr, parent)
{}

CoordSystemButton::CoordSystemButton(std::shared_ptr<CoordSysFactory> factory, QWidget *parent)
    : QPushButton(parent)
    , d(std::make_unique<Private>())
{
    d->factory = std::move(factory);
    setCoordSystem(nullptr);
    connect(this, &QPushButton::clicked, this, [this] {
        auto *dialog = new CoordSystemDialog(
            d->factory ? d->factory : CoordSysFactory::defaultCoordSysFactory(), window());
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->setNoSystemAllowed(d->isNoSystemAllowed);
        dialog->picker()->setKinds(d->kinds);
        dialog->picker()->setView(d->view);
        dialog->picker()->setCoordSystem(d->system);
        connect(dialog, &CoordSystemDialog::chosen, this, [this](const CoordSystemPtr &system) {
            setCoordSystem(system);
            Q_EMIT coordSystemChanged(system);
        });
        dialog->open();
    });
}

CoordSystemButton::~CoordSystemButton() = default;

CoordSystemPtr CoordSystemButton::coordSystem() const { return d->system; }

void CoordSystemButton::setCoordSystem(const CoordSystemPtr &cs)
{
    d->system = cs;
    const QString name = cs ? cs->description() : WidgetTexts::tr("Выбрать систему…");
    setText(QString(name).replace(QLatin1Char('&'), QStringLiteral("&&")));
    setAccessibleName(cs ? WidgetTexts::tr("Система координат: %1").arg(name) : name);
}

void CoordSystemButton::setKinds(CoordSystemPicker::Kinds kinds) { d->kinds = kinds; }

void CoordSystemButton::setNoSystemAllowed(bool isAllowed) { d->isNoSystemAllowed = isAllowed; }

void CoordSystemButton::setView(const QRectF &lonLat) { d->view = lonLat; }

} // namespace nivora::cs
