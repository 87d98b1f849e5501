#include "convert/clip_gathering.h"

#include "convert/clip_selection.h"
#include "convert/convert_exception.h"
#include "convert/event_file.h"
#include "convert/model_reader.h"
#include "convert/node_match.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>

namespace TW2::convert
{
namespace
{
std::size_t countMoved(const Model& model)
{
    std::set<int> moved;
    for (const Clip& clip : model.m_vecClips)
    {
        for (const Channel& channel : clip.m_vecChannels)
        {
            moved.insert(channel.m_iNode);
        }
    }
    return moved.size();
}

void warnOfLost(const MotionSource& source, std::vector<std::string>& warnings)
{
    constexpr std::size_t most = 8;
    if (source.m_vecLost.empty())
    {
        return;
    }
    std::string names;
    for (std::size_t i = 0; i < std::min(source.m_vecLost.size(), most); ++i)
    {
        names += (i > 0 ? ", \"" : "\"") + source.m_vecLost[i] + "\"";
    }
    warnings.push_back(std::to_string(source.m_vecLost.size()) + " moved nodes of \"" + source.m_strName +
                       "\" have no counterpart and are left out: " + names +
                       (source.m_vecLost.size() > most ? " and others" : ""));
}
}  // namespace

std::vector<Model> readModels(const std::vector<std::string>& files, const Options& options)
{
    std::vector<Model> models;
    for (const std::string& file : files)
    {
        options.tell("reading " + std::filesystem::path(file).filename().string(),
                     partOfReading * static_cast<double>(models.size()) / static_cast<double>(files.size()));
        models.push_back(readModel(file, options.m_import));
        addEventsBeside(models.back(), file);
    }
    return models;
}

void gatherClips(Model& body, std::vector<Model>& models, const std::string& fileName, const Options& options,
                 std::vector<MotionSource>& sources)
{
    NodeMap map;
    if (!options.m_strMapFile.empty())
    {
        map = NodeMap(options.m_strMapFile);
        std::vector<const Model*> others;
        for (const Model& model : models)
        {
            others.push_back(&model);
        }
        map.check(body, others);
        body.m_vecSources.push_back(options.m_strMapFile);
    }
    std::vector<Clip> clips;
    for (Model& model : models)
    {
        if (&model == &body)
        {
            std::move(model.m_vecClips.begin(), model.m_vecClips.end(), std::back_inserter(clips));
            continue;
        }
        std::vector<Clip> fitted = fitClips(body, model, map, sources.emplace_back());
        if (const std::size_t moved = countMoved(model); moved > 0 && moved == sources.back().m_vecLost.size())
        {
            const std::string reason = "none of the nodes that it moves is called as one of \"" + body.m_strName +
                                       "\": a file for --map tells which is which";
            throw ConvertException(model.m_strName.c_str(), reason.c_str());
        }
        std::move(fitted.begin(), fitted.end(), std::back_inserter(clips));
        warnOfLost(sources.back(), body.m_vecWarnings);
        std::copy(model.m_vecSources.begin(), model.m_vecSources.end(), std::back_inserter(body.m_vecSources));
    }
    body.m_vecClips = options.m_vecClips.empty()
                          ? std::move(clips)
                          : chooseClips(clips, options.m_vecClips, options.m_iFrameRate, fileName);
    if (options.m_bMergeClips && body.m_vecClips.size() > 1)
    {
        const std::string name = body.m_vecClips.front().m_strName;
        body.m_vecClips = {mergeClips(body, std::move(body.m_vecClips), name, body.m_vecWarnings)};
    }
}
}  // namespace TW2::convert
