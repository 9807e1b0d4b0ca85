// SPDX-License-Identifier: MIT
#include "update/feedback/FeedbackRequest.h"

#include "platform/Platform.h"
#include "settings/Config.h"
#include "support/Http.h"
#include "support/MainQueue.h"
#include "support/Text.h"
#include "update/SitePage.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace parlivo {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QByteArray bodyOf(const Feedback& feedback) {
    const QJsonObject object{{u"rating"_s, feedback.rating},
                             {u"text"_s, feedback.text.trimmed()},
                             {u"email"_s, Text::trimmedBlanks(feedback.email)},
                             {u"appVersion"_s, Config::appVersion()},
                             {u"macos"_s, Platform::current().systemVersion().description()}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

bool isSuccess(const HttpReply& reply) {
    return reply.complete() && reply.status >= 200 && reply.status <= 299;
}

}  // namespace

std::unique_ptr<Worker> sendFeedback(const Feedback& feedback, const Lifetime::Token& owner,
                                     std::function<void(bool success)> completion) {
    HttpRequest request;
    request.url = sitePage(u"api/feedback"_s);
    request.method = "POST";
    request.headers = {{"Content-Type", "application/json"}};
    request.body = bodyOf(feedback);
    request.timeout = 15s;
    request.redirects = HttpRequest::Redirects::Refuse;
    const auto send = [request, owner, completion = std::move(completion)](const StopToken& calledOff) {
        const bool success = isSuccess(Http::exchange(request, calledOff));
        MainQueue::async(owner, [completion, success] { completion(success); });
    };
    return std::make_unique<Worker>(u"parlivo.feedback"_s, send);
}

}  // namespace parlivo
