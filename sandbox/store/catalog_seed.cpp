#include "store/catalog_seed.h"

#include "store/database.h"

namespace sandbox {

void seed_catalog(Database& db) {
  // Fixed guids and times, so that answers about the catalog are the same on every machine.
  // 1705309200000 is 2024-01-15T09:00:00Z.
  Transaction transaction(db);
  db.execute(R"sql(
DELETE FROM themes;
DELETE FROM templates WHERE project_guid IS NULL;
DELETE FROM deployment_environments;

INSERT INTO templates (guid, name, description, type, flags, folder_name, icon_url, width, height,
                       live_type, metadata_xml, created_at, modified_at) VALUES
  ('tpl-title-page', 'Title Page', 'Opening page with a heading and a logo', 'page', '',
   'title_page', '/icons/title_page.png', 800, 600, 0,
   '<METADATA><author>Telvane Studio</author><category>Intro</category></METADATA>',
   1705309200000, 1705309200000),
  ('tpl-video-player', 'Video Player', 'Plays one video with live captions', 'player', 'live',
   'video_player', '/icons/video_player.png', 640, 480, 1,
   '<METADATA><author>Telvane Studio</author><category>Media</category></METADATA>',
   1705309200000, 1705309200000),
  ('tpl-slide-viewer', 'Slide Viewer', 'Shows a slide deck in step with the presenter', 'player',
   '', 'slide_viewer', '/icons/slide_viewer.png', 1024, 768, 0,
   '<METADATA><author>Telvane Studio</author><category>Media</category></METADATA>',
   1705309200000, 1705309200000),
  ('tpl-qa-panel', 'Q&A Panel', 'Lets viewers send questions to the presenter', 'page', 'live',
   'qa_panel', '/icons/qa_panel.png', 320, 600, 1,
   '<METADATA><author>Telvane Studio</author><category>Interaction</category></METADATA>',
   1705309200000, 1705309200000),
  ('tpl-audience', 'Audience Response',
   'A poll, a feedback survey and questions; asks viewers to register', 'page', 'live',
   'audience_response', '/icons/audience_response.png', 480, 720, 1,
   '<METADATA><author>Telvane Studio</author><category>Interaction</category>'
   || '<registration>required</registration></METADATA>',
   1705309200000, 1705309200000);

INSERT INTO components (guid, template_guid, position, class_name, label) VALUES
  ('cmp-title-heading', 'tpl-title-page', 0, 'TextBlock', 'Heading'),
  ('cmp-title-logo', 'tpl-title-page', 1, 'Image', 'Logo'),
  ('cmp-video-main', 'tpl-video-player', 0, 'VideoPlayer', 'Main video'),
  ('cmp-slides-deck', 'tpl-slide-viewer', 0, 'SlideDeck', 'Slides'),
  ('cmp-qa-form', 'tpl-qa-panel', 0, 'QuestionForm', 'Questions'),
  ('cmp-audience-intro', 'tpl-audience', 0, 'TextBlock', 'Intro'),
  ('cmp-audience-poll', 'tpl-audience', 1, 'Poll', 'Session rating'),
  ('cmp-audience-survey', 'tpl-audience', 2, 'Survey', 'Feedback'),
  ('cmp-audience-questions', 'tpl-audience', 3, 'QuestionForm', 'Questions');

INSERT INTO component_properties (component_guid, position, name, value, asset_dependencies,
                                  asset_id, manageable, manageid) VALUES
  ('cmp-title-heading', 0, 'text', 'Welcome', '', '', 1, 'heading-text'),
  ('cmp-title-heading', 1, 'style', 'h1', '', '', 0, ''),
  ('cmp-title-logo', 0, 'src', 'logo.png', 'logo.png', 'asset-logo', 1, 'logo-src'),
  ('cmp-title-logo', 1, 'alt', 'Company logo', '', '', 1, 'logo-alt'),
  ('cmp-video-main', 0, 'source', 'intro.mp4', 'intro.mp4', 'asset-intro', 1, 'video-source'),
  ('cmp-video-main', 1, 'autoplay', 'false', '', '', 0, ''),
  ('cmp-slides-deck', 0, 'deck', '', '', '', 1, 'slide-deck'),
  ('cmp-slides-deck', 1, 'startSlide', '1', '', '', 0, ''),
  ('cmp-qa-form', 0, 'moderated', 'true', '', '', 1, 'qa-moderated'),
  ('cmp-qa-form', 1, 'maxLength', '500', '', '', 0, ''),
  ('cmp-audience-intro', 0, 'text', 'Tell us what you think', '', '', 1, 'audience-intro'),
  ('cmp-audience-poll', 0, 'question', 'How would you rate this session?', '', '', 1,
   'poll-question'),
  ('cmp-audience-poll', 1, 'answers', 'Excellent|Good|Fair|Poor', '', '', 1, 'poll-answers'),
  ('cmp-audience-survey', 0, 'q1', 'Which part was most useful?|Talks|Demos|Questions', '', '',
   1, 'survey-q1'),
  ('cmp-audience-survey', 1, 'q2', 'What should we change next time?', '', '', 1, 'survey-q2'),
  ('cmp-audience-questions', 0, 'moderated', 'false', '', '', 1, 'audience-moderated'),
  ('cmp-audience-questions', 1, 'maxLength', '500', '', '', 0, '');

INSERT INTO themes (guid, name, description, type, width, height, sm_icon_url, lg_icon_url,
                    created_at, modified_at) VALUES
  ('theme-corporate', 'Corporate Event', 'Title, video and questions for a live event', 'event',
   800, 600, '/icons/corporate_sm.png', '/icons/corporate_lg.png', 1705309200000, 1705309200000),
  ('theme-classroom', 'Classroom', 'Title and slides for a training session', 'training',
   1024, 768, '/icons/classroom_sm.png', '/icons/classroom_lg.png', 1705309200000, 1705309200000);

INSERT INTO theme_templates (theme_guid, position, template_guid, required) VALUES
  ('theme-corporate', 0, 'tpl-title-page', 1),
  ('theme-corporate', 1, 'tpl-video-player', 1),
  ('theme-corporate', 2, 'tpl-qa-panel', 0),
  ('theme-classroom', 0, 'tpl-title-page', 1),
  ('theme-classroom', 1, 'tpl-slide-viewer', 1);

INSERT INTO deployment_environments (id, name, must_use_path) VALUES
  (1, 'Staging', 0),
  (2, 'Production', 1);
)sql");
  transaction.commit();
}

}  // namespace sandbox
