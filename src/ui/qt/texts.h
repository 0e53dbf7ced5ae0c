// Texts on their way between the form, which has UTF-8 and CR LF, and Qt.
#pragma once

#include <QString>
#include <QTextDocument>

#include <string>
#include <string_view>

inline QString to_qt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// The form's text of a text box that shows `shown`, whose lines end in LF.
inline std::string form_text(QString shown) {
  return shown.replace(u'\n', QStringLiteral("\r\n")).toStdString();
}

// A tool tip that shows `text` as it is: names are strangers' and hold no markup.
inline QString plain_tip(std::string_view text) {
  const QString tip = to_qt(text);
  return Qt::mightBeRichText(tip) ? Qt::convertFromPlainText(tip) : tip;
}
