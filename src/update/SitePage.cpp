// SPDX-License-Identifier: MIT
#include "update/SitePage.h"

#include "settings/Config.h"

namespace parlivo {

QUrl sitePage(const QString& path) {
    QUrl url = Config::siteBase();
    QString whole = url.path();
    if (!whole.endsWith(u'/')) whole += u'/';
    url.setPath(whole + path);
    return url;
}

}  // namespace parlivo
