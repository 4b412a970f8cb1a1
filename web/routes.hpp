// What the route files of the browser view share: the reading of a request
// and the writing of an answer.
#pragma once

#include <httplib.h>

#include <nlohmann/json.hpp>
#include <vector>

#include "web/server.hpp"

namespace viewer::web {

using json = nlohmann::ordered_json;

Params params_of(const httplib::Request& req);
// The `run` parameter, or the served run.
int run_of(const httplib::Request& req, int served);
void answer(httplib::Response& res, const Rendered& r);
json tables_json(const std::vector<TableState>& tables);
// Run `id` of the study; throws QueryError (404) for none.
const StudyRun& study_run(const Study& s, int id);

template <class Query>
void Server::draw_once(httplib::Response& res, const std::string& key, const Query& q) {
    if (auto hit = cache_.find(key)) return answer(res, *hit);
    auto r = std::make_shared<const Rendered>(renderer_.render(q));
    answer(res, *r);
    if (r->status == 200) cache_.put(key, std::move(r));
}

}  // namespace viewer::web
