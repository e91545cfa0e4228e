#include "canopy/shape/shape_file.hpp"

#include <shapefil.h>

#include <memory>
#include <utility>

#include "base/run_log.hpp"
#include "base/stop.hpp"

namespace torvex {

namespace {

struct DestroyObject {
    void operator()(SHPObject* object) const { SHPDestroyObject(object); }
};
using OwnedObject = std::unique_ptr<SHPObject, DestroyObject>;

SHPHandle shapes(void* handle) {
    return static_cast<SHPHandle>(handle);
}

int report(const std::string& text) {
    console(text);
    return 1;
}

}  // namespace

std::string shape_type_name(int type) {
    static constexpr std::pair<int, const char*> words[] = {
        {SHPT_NULL, "NULL"},
        {SHPT_POINT, "POINT"},
        {SHPT_ARC, "ARC"},
        {SHPT_POLYGON, "POLYGON"},
        {SHPT_MULTIPOINT, "MULTIPOINT"},
        {SHPT_POINTZ, "POINTZ"},
        {SHPT_ARCZ, "ARCZ"},
        {SHPT_POLYGONZ, "POLYGONZ"},
        {SHPT_MULTIPOINTZ, "MULTIPOINTZ"},
        {SHPT_POINTM, "POINTM"},
        {SHPT_ARCM, "ARCM"},
        {SHPT_POLYGONM, "POLYGONM"},
        {SHPT_MULTIPOINTM, "MULTIPOINTM"},
        {SHPT_MULTIPATCH, "MULTIPATCH"},
    };
    for (const auto& [number, word] : words) {
        if (number == type) {
            return std::to_string(type) + " " + word;
        }
    }
    return std::to_string(type);
}

bool is_polygon_type(int type) {
    return type == SHPT_POLYGON || type == SHPT_POLYGONZ || type == SHPT_POLYGONM;
}

ShapeReader::~ShapeReader() {
    if (handle_ != nullptr) {
        SHPClose(shapes(handle_));
    }
}

int ShapeReader::open(const std::string& name) {
    const ShapeFileNames names = shape_file_names(name);
    if (names.shp.empty() || names.shx.empty()) {
        return report("Unable to open:" + name);
    }
    bytes_.open(names);
    path_ = names.shp;
    handle_ = SHPOpen(path_.c_str(), "rb");
    return handle_ == nullptr ? report("Unable to open:" + name) : 0;
}

int ShapeReader::info(ShapeFileInfo& info) const {
    if (handle_ == nullptr) {
        return report("There is no shape file to read.");
    }
    double low[4] = {};
    double high[4] = {};
    SHPGetInfo(shapes(handle_), &info.count, &info.type, low, high);
    if (info.count != bytes_.count()) {
        stop(1, "shapefile damaged: the index cannot be read", path_,
             "write the shapefile anew with the tool it came from");
    }
    info.box = {low[0], low[1], high[0], high[1]};
    return 0;
}

int ShapeReader::read(int entity, ShapeObject& object) {
    if (handle_ == nullptr || entity < 0 || entity >= bytes_.count()) {
        return report("There is no shape file to read.");
    }
    bytes_.check(entity);
    const OwnedObject read(SHPReadObject(shapes(handle_), entity));
    if (!read) {
        stop(1, "shapefile damaged: the record cannot be read",
             path_ + ", entity " + std::to_string(entity),
             "write the shapefile anew with the tool it came from");
    }
    object.box = {read->dfXMin, read->dfYMin, read->dfXMax, read->dfYMax};
    object.part_start.assign(read->panPartStart, read->panPartStart + read->nParts);
    object.x.assign(read->padfX, read->padfX + read->nVertices);
    object.y.assign(read->padfY, read->padfY + read->nVertices);
    return 0;
}

ShapeWriter::~ShapeWriter() {
    close();
}

int ShapeWriter::create(const std::string& name) {
    close();
    handle_ = SHPCreate(name.c_str(), SHPT_POLYGON);
    return handle_ == nullptr ? report("Unable to open:" + name) : 0;
}

int ShapeWriter::write_ring(const std::vector<double>& x, const std::vector<double>& y) {
    const auto count = static_cast<int>(x.size());
    const OwnedObject ring(handle_ == nullptr ? nullptr
                                              : SHPCreateSimpleObject(SHPT_POLYGON, count, x.data(),
                                                                      y.data(), nullptr));
    if (!ring || SHPWriteObject(shapes(handle_), -1, ring.get()) < 0) {
        return report("Unable to write");
    }
    return 0;
}

void ShapeWriter::close() {
    if (handle_ != nullptr) {
        SHPClose(shapes(handle_));
        handle_ = nullptr;
    }
}

}  // namespace torvex
