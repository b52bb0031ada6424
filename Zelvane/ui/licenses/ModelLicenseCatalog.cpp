#include "ui/licenses/ModelLicenseCatalog.h"

namespace zelvane {

namespace {

/// An address of the table below. One that doesn't parse is a mistake in this file.
QUrl address(const QString& text)
{
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty()) {
        qFatal("%s is no address", qUtf8Printable(text));
    }
    return url;
}

} // namespace

const QList<ModelLicenseCatalog::Entry>& ModelLicenseCatalog::entries()
{
    static const QUrl apache =
        address(QStringLiteral("https://www.apache.org/licenses/LICENSE-2.0"));
    static const QString apacheName = QStringLiteral("Apache License 2.0");
    static const QList<Entry> entries{
        {QStringLiteral("llama"), QStringLiteral("llama.cpp"),
         QStringLiteral("Copyright © llama.cpp contributors"), QStringLiteral("MIT License"),
         address(QStringLiteral("https://opensource.org/license/mit")),
         address(QStringLiteral("https://github.com/ggml-org/llama.cpp"))},
        {QStringLiteral("hymt2"), QStringLiteral("Hy-MT2-7B (GGUF)"),
         QStringLiteral("Copyright © 2026 Tencent"), apacheName, apache,
         address(QStringLiteral("https://huggingface.co/tencent/Hy-MT2-7B-GGUF"))},
        {QStringLiteral("eurollm"), QStringLiteral("EuroLLM-9B-Instruct (GGUF)"),
         QStringLiteral("Copyright © EuroLLM / Utter Project contributors"), apacheName, apache,
         address(QStringLiteral("https://huggingface.co/utter-project/EuroLLM-9B-Instruct"))},
        {QStringLiteral("lmt60"), QStringLiteral("LMT-60-4B (GGUF)"),
         QStringLiteral("Copyright © NiuTrans contributors"), apacheName, apache,
         address(QStringLiteral("https://huggingface.co/NiuTrans/LMT-60-4B"))},
        {QStringLiteral("wikdict"), QStringLiteral("WikDict"),
         QStringLiteral("Copyright © WikDict / Wiktionary contributors"),
         QStringLiteral("Creative Commons Attribution-ShareAlike 3.0"),
         address(QStringLiteral("https://creativecommons.org/licenses/by-sa/3.0/")),
         address(QStringLiteral("https://www.wikdict.com/page/about"))},
    };
    return entries;
}

} // namespace zelvane
