-- What every database holds. Run at each start of the service, so each
-- statement leaves alone what is there. It writes nothing then, which INSERT OR
-- IGNORE does to tables that number their rows: so the service starts on a full
-- disk too. Waits for other programs' locks as the service's own statements do.
PRAGMA busy_timeout = 4000;
BEGIN IMMEDIATE;

INSERT INTO "protocol" ("name", "version", "reserved")
  SELECT "column1", '', '' FROM (VALUES ('ONVIF'), ('RS232'), ('QX310'), ('NDI'), ('VISCA_OVER_IP'), ('NDIHX'))
  WHERE "column1" NOT IN (SELECT "name" FROM "protocol");

INSERT INTO "device_type" ("name", "method", "reserved")
  SELECT "column1", 0, '' FROM (VALUES ('camera'), ('controller'))
  WHERE "column1" NOT IN (SELECT "name" FROM "device_type");

INSERT INTO "event" ("name", "message", "reserved")
  SELECT "column1", "column2", ''
  FROM (VALUES ('motion', 'Something moves in the picture'), ('tampering', 'The camera has been tampered with'))
  WHERE "column1" NOT IN (SELECT "name" FROM "event");

INSERT OR IGNORE INTO "setting" ("name", "value") VALUES ('created_by', 'vptzd');

COMMIT;
