-- What every database holds. Run at each start of the service, so each
-- statement leaves alone what is there. Waits for other programs' locks as the
-- service's own statements do.
PRAGMA busy_timeout = 4000;
BEGIN IMMEDIATE;

INSERT OR IGNORE INTO "protocol" ("name", "version", "reserved") VALUES
  ('ONVIF', '', ''), ('RS232', '', ''), ('QX310', '', ''), ('NDI', '', ''), ('VISCA_OVER_IP', '', ''), ('NDIHX', '', '');

INSERT INTO "device_type" ("name", "method", "reserved")
  SELECT 'camera', 0, '' WHERE NOT EXISTS (SELECT 1 FROM "device_type" WHERE "name" = 'camera');
INSERT INTO "device_type" ("name", "method", "reserved")
  SELECT 'controller', 0, '' WHERE NOT EXISTS (SELECT 1 FROM "device_type" WHERE "name" = 'controller');

INSERT OR IGNORE INTO "event" ("name", "message", "reserved") VALUES
  ('motion', 'Something moves in the picture', ''), ('tampering', 'The camera has been tampered with', '');

INSERT OR IGNORE INTO "setting" ("name", "value") VALUES ('created_by', 'vptzd');

COMMIT;
