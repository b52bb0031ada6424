#pragma once

#include <QString>

/// Texts of several scripts and lengths to fill windows with.
namespace zelvane::gallery::texts {

inline QString shortEnglish()
{
    return QStringLiteral("The meeting has been moved to Thursday.");
}

inline QString shortGerman()
{
    return QStringLiteral("Die Besprechung wurde auf Donnerstag verschoben.");
}

inline QString longEnglish()
{
    return QStringLiteral(
        "A lighthouse keeper's day used to begin before dawn. The lamp had to be trimmed, the lens "
        "polished and the clockwork wound, all before the first boat passed the point. Weather was "
        "written into a ledger four times a day, in a hand so even that the entries of thirty "
        "years look like the work of a single afternoon.\n\nWhen the light was made automatic, the "
        "ledger went to the county archive. Nobody had told the last keeper that he could stop "
        "writing, so it ends with three years of wind and cloud that no office had asked for. "
        "Historians of climate now find those pages the most useful ones of all.");
}

inline QString longGerman()
{
    return QStringLiteral(
        "Der Tag eines Leuchtturmwärters begann früher vor der Morgendämmerung. Die Lampe musste "
        "geputzt, die Linse poliert und das Uhrwerk aufgezogen werden, und das alles, bevor das "
        "erste Boot die Landspitze passierte. Viermal am Tag wurde das Wetter in ein Hauptbuch "
        "eingetragen, in einer so gleichmäßigen Handschrift, dass die Einträge aus dreißig Jahren "
        "wie das Werk eines einzigen Nachmittags wirken.\n\nAls das Feuer automatisiert wurde, kam "
        "das Buch ins Kreisarchiv. Niemand hatte dem letzten Wärter gesagt, dass er aufhören "
        "durfte, und so endet es mit drei Jahren Wind und Wolken, nach denen keine Behörde gefragt "
        "hatte. Gerade diese Seiten halten Klimahistoriker heute für die nützlichsten.");
}

inline QString wordsGerman()
{
    return QStringLiteral(
        "Die Donaudampfschifffahrtsgesellschaftskapitänsversicherungsbedingungen und die "
        "Rindfleischetikettierungsüberwachungsaufgabenübertragungsgesetzgebung sind in der "
        "Betriebsunfähigkeitszusatzversicherungsvertragsergänzung geregelt.");
}

inline QString hindi()
{
    return QStringLiteral(
        "प्रकाशस्तंभ के रखवाले का दिन भोर से पहले शुरू होता था। पहली नाव के गुज़रने से पहले दीपक साफ़ करना, "
        "लेंस चमकाना और घड़ी की चाबी भरना ज़रूरी था। दिन में चार बार मौसम का हाल बही में लिखा जाता था, "
        "इतनी समान लिखावट में कि तीस साल की प्रविष्टियाँ एक ही दोपहर का काम लगती हैं।");
}

inline QString chinese()
{
    return QStringLiteral(
        "灯塔看守人的一天在黎明前就开始了。在第一艘船驶过海角之前，必须修剪灯芯、擦亮透镜、上好发条"
        "。"
        "每天四次把天气记入账簿，字迹如此工整，三十年的记录看上去就像一个下午写成的。\n\n"
        "灯塔自动化之后，这本账簿被送进了县档案馆。没有人告诉最后一位看守人可以停笔。");
}

inline QString arabic()
{
    return QStringLiteral(
        "كان يوم حارس المنارة يبدأ قبل الفجر. كان عليه أن يهذّب الفتيل ويصقل العدسة ويملأ الساعة "
        "قبل أن "
        "يمرّ أول قارب عند الرأس. وكان الطقس يُدوَّن في السجل أربع مرات في اليوم، بخط منتظم "
        "حتى تبدو قيود ثلاثين عامًا كأنها كُتبت بعد ظهر يوم واحد.");
}

} // namespace zelvane::gallery::texts
