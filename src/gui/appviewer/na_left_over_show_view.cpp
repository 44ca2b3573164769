#include "appviewer/na_left_over_show_view.h"

#include <QDesktopServices>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QIcon>
#include <QMimeDatabase>
#include <QProcess>
#include <QUrl>
#include <algorithm>

#include "platform/volume.h"
#include "ui/named_image.h"

namespace sysmend {

namespace {

constexpr int kIconSize = 20;

// The picture of an item's icon reference, drawn at `size`.
QPixmap iconPixmap(const ImageRef& icon, QSize size, qreal dpr) {
    const QString value = QString::fromStdString(icon.value);
    const QFileIconProvider provider;
    switch (icon.kind) {
        case ImageRef::Kind::NamedImage:
            if (QPixmap named = namedImage(value, size, dpr); !named.isNull())
                return named;
            break;
        case ImageRef::Kind::FileIcon: {
            const QFileInfo info(QString::fromStdString(Volume::current().hostPath(icon.value)));
            if (info.exists() || info.isSymLink())
                return provider.icon(info).pixmap(size, dpr);
            break;
        }
        case ImageRef::Kind::FileTypeIcon: {
            const QMimeType type = QMimeDatabase().mimeTypeForFile(QStringLiteral("file.") + value,
                                                                   QMimeDatabase::MatchExtension);
            const QIcon themed = QIcon::fromTheme(type.iconName());
            if (!themed.isNull())
                return themed.pixmap(size, dpr);
            break;
        }
        case ImageRef::Kind::ImageFile: {
            QPixmap picture(QString::fromStdString(Volume::current().hostPath(icon.value)));
            if (!picture.isNull()) {
                picture = picture.scaled(size * dpr, Qt::KeepAspectRatio, Qt::SmoothTransformation);
                picture.setDevicePixelRatio(dpr);
                return picture;
            }
            break;
        }
        case ImageRef::Kind::None:
            break;
    }
    return provider.icon(QFileIconProvider::File).pixmap(size, dpr);
}

}  // namespace

NALeftOverShowView::NALeftOverShowView(QWidget* parent) : NACellBaseView(parent) {
    // The search button takes clicks; elsewhere a press goes on to the table, which selects
    // the row.
    setAttribute(Qt::WA_TransparentForMouseEvents, false);
}

NALeftOverShowView* NALeftOverShowView::initwithNib() {
    auto* cell =
        loadNib(QStringLiteral("NALeftOverCellView"), "NALeftOverShowView",
                [](QWidget* parent) -> NACellBaseView* { return new NALeftOverShowView(parent); });
    return static_cast<NALeftOverShowView*>(cell);
}

void NALeftOverShowView::awakeFromNib() {
    icon_view = findChild<QLabel*>(QStringLiteral("icon_view"));
    path_view = findChild<QLabel*>(QStringLiteral("path_view"));
    search_btn = findChild<QToolButton*>(QStringLiteral("search_btn"));
    if (search_btn) {
        search_btn->setIcon(
            QIcon(namedImage(QStringLiteral("reveal"), QSize(16, 16), devicePixelRatioF())));
        search_btn->setIconSize(QSize(16, 16));
        // An image button: a screen reader says what it does, as the tooltip does.
        search_btn->setAccessibleName(QStringLiteral("Show the file in its folder"));
#ifdef Q_OS_MACOS
        search_btn->setToolTip(QStringLiteral("Show in Finder"));
#else
        search_btn->setToolTip(QStringLiteral("Show in Folder"));
#endif
        connect(search_btn, &QToolButton::clicked, this, &NALeftOverShowView::search);
    }
}

void NALeftOverShowView::setObj(const std::shared_ptr<NAFileobj>& item) {
    obj_ = item;
    item_ = item;
    setRepresentObj(item);
    if (icon_view) {
        icon_view->setPixmap(iconPixmap(item ? item->fileIcon() : ImageRef::none(),
                                        QSize(kIconSize, kIconSize), devicePixelRatioF()));
    }
    showPath();
}

void NALeftOverShowView::search() {
    if (item_)
        revealInFileViewer(item_->filePath());
}

void NALeftOverShowView::resizeEvent(QResizeEvent* event) {
    NACellBaseView::resizeEvent(event);
    showPath();
}

void NALeftOverShowView::showPath() {
    if (!path_view)
        return;
    const QString path = item_ ? QString::fromStdString(item_->filePath()) : QString();
    // Long paths keep both ends: the folder they start in and the file's name.
    path_view->setText(path_view->fontMetrics().elidedText(path, Qt::ElideMiddle,
                                                           std::max(0, path_view->width())));
    path_view->setToolTip(path);
}

void revealInFileViewer(std::string_view volumePath) {
    const QString host = QString::fromStdString(Volume::current().hostPath(volumePath));
#ifdef Q_OS_MACOS
    if (QFileInfo(host).exists() || QFileInfo(host).isSymLink()) {
        QProcess::startDetached(QStringLiteral("/usr/bin/open"), {QStringLiteral("-R"), host});
        return;
    }
#endif
    // The folder that holds the file, or the nearest one above it that still exists.
    QFileInfo folder(QFileInfo(host).absolutePath());
    while (!folder.isDir() && folder.absoluteFilePath() != QStringLiteral("/"))
        folder = QFileInfo(folder.absolutePath());
    QDesktopServices::openUrl(QUrl::fromLocalFile(folder.absoluteFilePath()));
}

}  // namespace sysmend
