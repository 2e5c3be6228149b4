#include "host/interchange/TimelineSurvey.h"

#include "host/interchange/OtioClip.h"
#include "host/project/Decimal.h"

namespace qmx::host
{
namespace
{
class Surveyor
{
public:
    explicit Surveyor(TransferReport& report) : m_report(report) {}

    void Visit(const OtioObject& object, bool isAudio)
    {
        const std::string schema = object.Schema();
        if (!object.Flag("enabled", true))
            return; // whoever places it says that it is left out
        CountTexts(object);
        ReportEffects(object);
        ReportMarkers(object);
        if (schema == "Clip")
            VisitClip(object, isAudio);
        if (schema == "Track")
            isAudio = object.Text("kind") == "Audio";
        if (schema != "Track" && schema != "Stack")
            return;
        for (const OtioObject& child : object.Children("children"))
            Visit(child, isAudio);
    }

    TimelineFacts Finish(const OtioObject& root)
    {
        const auto report = [&](std::size_t count, const char* pWhat, const char* pWhy)
        {
            if (count != 0)
                m_report.Add(root.Place(), root.Name(),
                             pWhat + (" of " + std::to_string(count)) + (count == 1 ? " object" : " objects"), pWhy);
        };
        report(m_names, "names", "a project has none");
        report(m_foreign, "metadata", "those of other programs are left out");
        return std::move(m_facts);
    }

private:
    void CountTexts(const OtioObject& object)
    {
        const bool isOwn = object.OwnMetadata() != nullptr; // then the name was made from what the project has
        const bool isNamed = !object.Name().empty() && (object.Is("Track") || object.Is("Clip"));
        m_names += isNamed && !isOwn ? 1 : 0;
        m_foreign += object.HasForeignMetadata() ? 1 : 0;
    }

    void ReportEffects(const OtioObject& object)
    {
        for (const OtioObject& effect : object.Children("effects"))
        {
            if (!effect.Flag("enabled", true))
                continue;
            const std::string schema = effect.Schema();
            const auto report = [&](const std::string& what, const char* pWhy)
            { m_report.Add(object.Place(), object.Name(), what, pWhy); };
            const double scalar = effect.Number("time_scalar").value_or(1);
            if (schema == "FreezeFrame" || (schema == "LinearTimeWarp" && scalar == 0))
                report("freeze frame", "the pictures move on");
            else if (schema == "LinearTimeWarp" && scalar != 1)
                report("speed " + NumberText(scalar), "it plays at its own speed from the same start");
            else if (schema != "LinearTimeWarp" && (schema != "AudioVolume" || object.Is("Stack")))
                report("effect \"" + NameOf(effect, schema) + '"', "left out");
        }
    }

    static std::string NameOf(const OtioObject& effect, const std::string& schema)
    {
        const std::string kind = effect.Text("effect_name");
        if (!kind.empty())
            return kind;
        return effect.Name().empty() ? schema : effect.Name();
    }

    void ReportMarkers(const OtioObject& object)
    {
        for (const OtioObject& marker : object.Children("markers"))
        {
            const std::optional<OtioRange> range = marker.Range("marked_range");
            const std::string when = range ? " at " + SignedSeconds(range->start) + " s of its object" : "";
            m_report.Add(object.Place(), object.Name(), "marker \"" + marker.Name() + '"' + when, "left out");
        }
    }

    static std::string SignedSeconds(const TimelineTime& time)
    {
        const std::int64_t units = time.NearestUnits();
        const auto size = static_cast<std::uint64_t>(units < 0 ? -units : units);
        return (units < 0 ? "-" : "") + SecondsText(size);
    }

    void VisitClip(const OtioObject& clip, bool isAudio)
    {
        if (isAudio)
        {
            m_facts.hasSoundTrack = true;
            return;
        }
        const std::optional<OtioRange> range = RangeOfClip(clip);
        if (range && !m_facts.rate)
            m_facts.rate = FrameRate::FromFraction(range->rate.numerator, range->rate.denominator);
        const std::optional<OtioObject> reference = ActiveReference(clip);
        if (!m_facts.url && reference && reference->Is("ExternalReference"))
            m_facts.url = reference->Text("target_url");
    }

    TransferReport& m_report;
    TimelineFacts m_facts;
    std::size_t m_names = 0;
    std::size_t m_foreign = 0;
};
} // namespace

TimelineFacts SurveyTimeline(const OtioObject& root, TransferReport& report)
{
    Surveyor surveyor(report);
    surveyor.Visit(root, false);
    return surveyor.Finish(root);
}
} // namespace qmx::host
